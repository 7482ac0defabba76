#!/usr/bin/env bash
# The verbs of daily work. `./do` alone lists them.
set -euo pipefail
cd "$(dirname "$0")"

# build PRESET [TARGET...]
build() {
    local preset=$1
    shift
    [ -f "build/$preset/build.ninja" ] || cmake --preset "$preset"
    cmake --build --preset "$preset" ${1:+--target "$@"}
}

verb_test() {
    local preset=${1:-native}
    build "$preset"
    ctest --preset "$preset"
}

case ${1:-} in
    test) shift; verb_test "$@" ;;
    *) echo "usage: ./do test [PRESET]"; exit 2 ;;
esac

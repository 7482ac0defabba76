#!/usr/bin/env bash
# The verbs of daily work. `./do help` lists them.
set -euo pipefail
cd "$(dirname "$(realpath "$0")")"
. scripts/common.sh

# What the build of each preset needs, as Debian packages.
need_for() {
    local packages=(cmake ninja-build g++ googletest pkg-config)
    case $1 in
        native) packages+=(abigail-tools doxygen gdb valgrind) ;;
        asan) packages+=(valgrind) ;;
        i386) packages+=(g++-multilib gdb) ;;
        windows) packages+=(g++-mingw-w64-i686-posix) ;;
        bench) packages+=(libmimalloc-dev libjemalloc-dev libgoogle-perftools-dev libboost-dev) ;;
        bench-i386) packages+=(g++-multilib libboost-dev) ;;
        fuzz) packages+=(clang libclang-rt-14-dev) ;;
    esac
    need "${packages[@]}"
}

# build PRESET [TARGET...]
build() {
    local preset=$1
    shift
    need_for "$preset"
    # Each time, for what changed in the presets; it takes a second.
    cmake --preset "$preset" --log-level=WARNING >&2
    cmake --build --preset "$preset" ${1:+--target "$@"} >&2
}

# run_tests PRESET [COMMAND...]: ctest, behind COMMAND if given. The last line counts the cases.
run_tests() {
    local preset=$1 status=0
    shift
    build "$preset"
    find "build/$preset" -path '*/results/*.xml' -delete
    rm -f "build/$preset/ctest.xml"
    "$@" ctest --preset "$preset" --parallel "$(nproc)" --no-tests=error \
        --output-junit "$PWD/build/$preset/ctest.xml" </dev/null || status=$?
    [ -f "build/$preset/ctest.xml" ] || die "$preset: the tests could not be run"
    scripts/test-report "$preset" || status=1
    return "$status"
}

tracked() { git ls-files -- "$@"; }

verb_setup() {
    need_for native
    need_for i386
    need_for windows
    need_for bench
    need_for bench-i386
    need clang-format clang-tidy shellcheck doxygen
    scripts/wine-root
}

verb_run() {
    build native veldt-replay
    exec build/native/tools/veldt-replay --verify "$@" examples/traces/perl.trace
}

verb_test() {
    local preset=${1:-native}
    case $preset in
        windows) verb_test-windows ;;
        *) run_tests "$preset" ;;
    esac
}

verb_test-windows() {
    scripts/wine-root
    run_tests windows scripts/wine --session
}

# Deliberately: the lists are what a change of the exported interface is reviewed by.
verb_exports() {
    local preset module
    for preset in native i386 windows; do
        build "$preset" veldt20_shared
        module=build/$preset/src/libVELDT20.so
        [ "$preset" != windows ] || module=build/windows/bin/VELDT20.dll
        scripts/exports "$module" >"tests/module/exports/$preset.txt"
    done
    git diff --stat -- tests/module/exports
}

# With a release, or before the first one; after it only a new major version may break the record.
verb_record-abi() {
    build native veldt20_shared
    local version
    mkdir -p tests/module/abi
    version=$(sed -n 's/^project(VELDT20 VERSION \([0-9]*\)\..*/\1/p' CMakeLists.txt)
    abidw --exported-interfaces-only --no-comp-dir-path --no-corpus-path \
        --no-show-locs --no-parameter-names --type-id-style hash \
        --out-file "tests/module/abi/$version.abi" build/native/src/libVELDT20.so
    git diff --stat -- tests/module/abi
}

verb_bench() {
    build bench veldt-bench
    build bench-i386 veldt-bench
    build/bench/bench/veldt-bench \
        --narrow build/bench-i386/bench/veldt-bench --keep . "$@"
}

# profile [NAME...]: with no name, the rows that missed their bound, kept in docs/profiles.md.
verb_profile() {
    need valgrind
    build bench veldt-bench
    if [ $# -gt 0 ]; then
        scripts/profile build/bench/bench/veldt-bench "$@"
    else
        scripts/profile build/bench/bench/veldt-bench >build/profiles.md
        mv build/profiles.md docs/profiles.md
    fi
}

# fuzz [NAME [SECONDS]]: what breaks one is left in build/fuzz as crash-*, to be given to it again.
verb_fuzz() {
    build fuzz
    cd build/fuzz
    local fuzzer
    for fuzzer in ${1:-memory numbers strings}; do
        say "$fuzzer:"
        mkdir -p "corpus/$fuzzer"
        "tests/fuzz/fuzz_$fuzzer" -max_total_time="${2:-60}" -max_len=2000 -print_final_stats=1 \
            "corpus/$fuzzer"
    done
}

# Deliberately, as the exports: a changed picture is to be looked at.
verb_figures() {
    build native docs_figures veldt-replay
    build/native/tests/docs/docs_figures docs/pictures
    build/native/tools/veldt-replay --picture docs/pictures/perl-trace.svg examples/traces/perl.trace
    git diff --stat -- docs/pictures
}

verb_docs() {
    need doxygen
    docs/make-reference build/docs
    say "The reference is build/docs/index.html"
}

verb_format() {
    need clang-format
    tracked '*.h' '*.cpp' | xargs -r clang-format -i
}

verb_tidy() {
    need clang-tidy
    build native
    [ $# -gt 0 ] || mapfile -t sources < <(tracked 'src/*.cpp' ':!src/platform/windows')
    printf '%s\n' "${@:-${sources[@]}}" |
        xargs -r -P "$(nproc)" -n 1 clang-tidy --quiet -p build/native
}

verb_check() {
    need clang-format shellcheck
    local status=0
    scripts/check-layers || status=1
    tracked '*.h' '*.cpp' | xargs -r clang-format --dry-run --Werror || status=1
    shellcheck -x ./do .ci/run docs/make-reference scripts/* tests/*/*.sh || status=1
    [ "$status" -eq 0 ] && say "check: all in order"
    return "$status"
}

verb_help() {
    cat <<'END'
usage: ./do VERB
  setup          install what all the verbs below need, and make the tree for Wine
  run [OPTION...] build veldt-replay and replay a real program's memory on this heap
  test [PRESET]  build and run the tests of a preset (native if none is named)
  test-windows   build VELDT20.dll and run all tests under Wine
  exports        write the committed lists of exported symbols anew
  record-abi     record what the ABI check compares with
  bench [NAME...] measure this library beside others, all of it or the rows with such a NAME;
                 a full run is kept in docs/benchmarks.md (--quick: once, and nothing is kept)
  profile [NAME...]  where the time goes in the rows that missed their bound, kept in
                 docs/profiles.md, or in the rows with such a NAME
  fuzz [NAME [SECONDS]]  look for inputs that break the heap, the numbers or the strings
  figures        draw the committed pictures of the heap anew
  docs           the reference of the exported interface, into build/docs
  format         clang-format every file in place
  tidy [FILE...] clang-tidy on src/
  check          layers, format, shell scripts
The presets stand in CMakePresets.json: native, i386, windows, asan, tsan, coverage, ...
END
}

verb=${1:-help}
[ $# -eq 0 ] || shift
declare -F "verb_$verb" >/dev/null || { verb_help >&2; exit 2; }
"verb_$verb" "$@"

#!/usr/bin/env bash
# usage: compare_exports.sh MODULE LIST
#
# The module exports just what the committed list says, so that no export is lost or gained
# unnoticed. `./do exports` writes the lists anew.
set -euo pipefail
here=$(dirname "$(realpath "$0")")
if ! diff "$2" <("$here/../../scripts/exports" "$1"); then
    echo "> is exported and not in $2, < is in it and not exported. If that is meant: ./do exports"
    exit 1
fi
echo "$(wc -l <"$2") symbols"

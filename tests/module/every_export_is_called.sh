#!/usr/bin/env bash
# usage: every_export_is_called.sh MODULE PROGRAM PRIVATE
#
# The program refers to every function that the module exports, but for private members, which come
# along with their class and are listed in PRIVATE.
set -euo pipefail
export LC_ALL=C
here=$(dirname "$(realpath "$0")")
# A 64-bit number is long on one target and long long on another.
names() {
    "$here/../../scripts/exports" "$@" | cut -d' ' -f2- | sed 's/long long/long/g' | sort -u
}

functions=$(names "$1" | grep -vE '^(vtable|typeinfo|typeinfo name|VTT) for ')
called=$(names --used-by "$2")
not_called=$(comm -23 <(printf '%s\n' "$functions") <(printf '%s\n' "$called"))
private=$(sed '/^#/d' "$3" | sort)
status=0
if missing=$(comm -23 <(printf '%s\n' "$not_called") <(printf '%s\n' "$private") | grep .); then
    printf 'Exported and never called by %s:\n%s\n' "$(basename "$2")" "$missing"
    status=1
fi
if stale=$(comm -13 <(printf '%s\n' "$not_called") <(printf '%s\n' "$private") | grep .); then
    printf 'In %s, though not exported or called after all:\n%s\n' "$3" "$stale"
    status=1
fi
echo "$(wc -l <<<"$functions") functions exported"
exit "$status"

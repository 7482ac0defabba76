#!/usr/bin/env bash
# usage: depends_and_starts.sh MODULE ARCHIVE
#
# The module needs nothing beyond the system's own modules, on Windows not even the compiler's
# runtime; and none of its objects asks for initialisation when it is loaded.
set -euo pipefail
module=$1 archive=$2
status=0

if [[ $module == *.dll ]]; then
    objdump=i686-w64-mingw32-objdump
    needed=$("$objdump" -p "$module" | sed -n 's/^[[:space:]]*DLL Name: //p')
    allowed='KERNEL32|USER32|OLEAUT32|ADVAPI32|msvcrt'
    others=$(grep -vxiE "($allowed)\.dll" <<<"$needed" || true)
    grep -qw DisableThreadLibraryCalls < <("$objdump" -p "$module") ||
        { echo "$module lets itself be told of every thread"; status=1; }
else
    objdump=objdump
    needed=$("$objdump" -p "$module" | sed -n 's/^[[:space:]]*NEEDED[[:space:]]*//p')
    allowed='libc|libm|libpthread|libstdc\+\+|libgcc_s|libasan|libubsan|libtsan|ld-linux.*'
    others=$(grep -vxE "($allowed)\.so.*" <<<"$needed" || true)
fi
initialisers='\.ctors|\.init_array'
[ -n "$needed" ] || { echo "No dependence of $module could be read"; status=1; }
[ -z "$others" ] || { echo "$module needs more than the system: $others"; status=1; }

# The sanitizers' own registration is such a section in every object.
if ! grep -q '__[at]san_init' <(nm "$archive" 2>/dev/null); then
    starting=$("$objdump" -h "$archive" | awk -v sections="^($initialisers)" '
        /file format/ { object = $1 }
        $2 ~ sections { print object }')
    [ -z "$starting" ] || { echo "Initialised when the module is loaded: $starting"; status=1; }
fi
exit "$status"

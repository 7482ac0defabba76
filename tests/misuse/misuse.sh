#!/usr/bin/env bash
# usage: misuse.sh PROGRAM KIND [VALGRIND]
#
# Runs the program, built with the address sanitizer or under Valgrind, and demands that its mistake
# is reported and nothing before it; or, of the kind `none`, that nothing is.
set -euo pipefail
program=$1 kind=$2
command=("$program" "$kind") report='AddressSanitizer: use-after-poison .*'
if [ $# -gt 2 ]; then
    command=("$3" --quiet --error-exitcode=9 "${command[@]}") report='Invalid read of size 1'
fi

status=0
said=$("${command[@]}" 2>&1) || status=$?
before=${said%%mistake:*}
after=${said#"$before"}
if [ "$kind" = none ]; then
    [ "$status" = 0 ] && ! grep -q '==[0-9]*==' <<<"$said" && exit
elif [ "$status" != 0 ] && ! grep -q '==[0-9]*==' <<<"$before" && grep -q "$report" <<<"$after"; then
    exit
fi
echo "$kind: exit status $status, and this was said:"
echo "$said"
exit 1

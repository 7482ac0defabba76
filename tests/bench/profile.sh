#!/usr/bin/env bash
# usage: profile.sh PROFILE VELDT-BENCH: does scripts/profile say of a veldt-bench with made-up rows
# what is known of them?
set -euo pipefail
profile=$1 bench=$2

fail() {
    printf '%s\n' "$@"
    exit 1
}

list=$("$bench" --list)
[ "$list" = $'0 0 Known work: even\n0 1 Known work: uneven\n1 0 Others: even' ] ||
    fail "the list is wrong:" "$list"

table=$("$profile" "$bench" uneven)
row=$(tail -n +3 <<<"$table")
pattern='^\| Known work: uneven \| ([0-9]+) k / ([0-9]+) k '
pattern+='\| 2 k / 0 k \| 0 k / 0 k \| Ours (99|100) % \|$'
[[ $row =~ $pattern ]] || fail "the row is wrong:" "$table"
awk -v ours="${BASH_REMATCH[1]}" -v theirs="${BASH_REMATCH[2]}" \
    'BEGIN { exit !(ours > 3.9 * theirs && ours < 4.3 * theirs) }' ||
    fail "four times the work is something else:" "$row"

"$profile" "$bench" nonesuch && fail "a row that is none was profiled"
[ "$("$profile" "$bench" | tail -n 1)" = '|---|--:|--:|--:|---|' ] ||
    fail "rows that missed their bound, but are not in the list, were profiled"

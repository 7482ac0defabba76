#!/usr/bin/env bash
# usage: compare_figures.sh PROGRAM FOLDER: are the pictures in FOLDER those that PROGRAM makes?
set -euo pipefail
made=$(mktemp -d)
trap 'rm -rf "$made"' EXIT
"$1" "$made"
status=0
for picture in "$made"/*.svg; do
    name=$(basename "$picture")
    cmp "$picture" "$2/$name" || status=1
    grep -q "pictures/$name)" "$2/../heap.md" || { echo "$name: not shown in heap.md"; status=1; }
done
[ "$status" -eq 0 ] || echo "./do figures makes them anew"
exit "$status"

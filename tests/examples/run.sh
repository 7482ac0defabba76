#!/usr/bin/env bash
# usage: run.sh NAME PROGRAM DATA WORK
#
# Runs an example in a fresh folder of WORK with copies of DATA, and compares what it says and
# leaves with what stands in expected/. The program's emulator comes in EMULATOR.
set -euo pipefail
here=$(dirname "$(realpath "$0")")
name=$1 program=$2 work=$4/$1
rm -rf "$work"
mkdir -p "$work"
cp "$3"/* "$work"
cd "$work"

run() { ${EMULATOR:-} "$program" "$@" | tr -d '\r'; }
same() { diff -u "$here/expected/$1" "$2"; }

# The footprint differs between targets; that less than half of it is left doesn't.
compacted_by_half() {
    local before after
    read -r before after < <(sed -n 's/^footprint: \([0-9]*\) bytes before, \([0-9]*\) after$/\1 \2/p' said)
    [ -n "$after" ] && [ "$after" -gt 0 ] && [ $((after * 2)) -lt "$before" ]
}

case $name in
    editor)
        run versions.txt versions.edits >said
        same editor.txt said
        same editor.saved.txt versions.txt
        ;;
    records)
        run summits.csv table >said
        same records.txt said
        # A header of 8 bytes, 14 records of 40; and an existing file is not overwritten.
        [ "$(stat -c %s table)" = $((8 + 14 * 40)) ]
        if run summits.csv table >/dev/null 2>refusal; then exit 1; fi
        tr -d '\r' <refusal | grep -qx 'table: error 8'
        ;;
    loans)
        run loans.txt >said
        same loans.txt said
        ;;
    words)
        run versions.txt >said
        same words.txt said
        ;;
    fragments)
        run versions.txt picture.svg >said
        grep -qx 'lines: 5000 opened, 625 kept, 625 of them intact' said
        compacted_by_half
        grep -q 'Before compaction' picture.svg
        grep -q 'After compaction' picture.svg
        [ "$(tail -n 1 picture.svg)" = '</svg>' ]
        ;;
    *) exit 2 ;;
esac

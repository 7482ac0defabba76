#!/usr/bin/env bash
# usage: compare_abi.sh MODULE RECORDED
#
# A program that was built against the recorded module runs with this one: functions, types and
# values are as they were, and only additions are allowed. `./do record-abi` records anew.
set -euo pipefail
abidiff --no-added-syms --exported-interfaces-only "$2" "$1" || {
    status=$?
    echo "The change above breaks programs that were built against the recorded module"
    exit "$status"
}

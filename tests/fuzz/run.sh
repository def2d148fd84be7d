#!/usr/bin/env bash
# Runs the fuzz targets of build/fuzz, or those named, for some seconds each, as many at a time as there are processors.
# Starts from tests/fuzz/corpus/; what is new goes to build/fuzz/corpus/, and an input that fails to build/fuzz/findings/.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
seconds=$1
shift
targets=("$@")
[ $# -gt 0 ] || for source in tests/fuzz/*Fuzz.cpp; do targets+=("$(basename "$source" .cpp)"); done

run_one() {
    local name=$1 status=0
    mkdir -p "build/fuzz/corpus/$name" build/fuzz/findings
    local corpus=("build/fuzz/corpus/$name")
    [ ! -d "tests/fuzz/corpus/$name" ] || corpus+=("tests/fuzz/corpus/$name")
    "build/fuzz/tests/fuzz/$name" -max_total_time="$seconds" -max_len=1024 -timeout=20 -print_final_stats=1 \
        -artifact_prefix="build/fuzz/findings/$name-" "${corpus[@]}" >"build/fuzz/$name.log" 2>&1 || status=$?
    [ "$status" -eq 0 ] || tail -40 "build/fuzz/$name.log"
    echo "$name: status $status, $(grep -o 'number_of_executed_units: .*' "build/fuzz/$name.log" | tr -dc 0-9) inputs," \
        "$(find "build/fuzz/corpus/$name" -type f | wc -l) kept"
    return "$status"
}
export -f run_one
export seconds
printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I '{}' bash -c 'run_one {}'

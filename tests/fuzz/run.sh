#!/usr/bin/env bash
# Runs the fuzz targets of build/fuzz, or those named, for some seconds each, as many at a time as there are processors.
# Starts from tests/fuzz/corpus/; what is new goes to build/fuzz/corpus/, and an input that fails to build/fuzz/findings/.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
seconds=$1
shift
targets=("$@")
[ $# -gt 0 ] || for source in tests/fuzz/*Fuzz.cpp; do targets+=("$(basename "$source" .cpp)"); done

# The default character sets that names of files are tried in: one target, one process each.
languages=(xx_YY.UTF-8 xx_YY.ISO-8859-1 ja_JP.SJIS ja_JP.eucJP zh_CN.GB18030 zh_TW.BIG5 ko_KR.EUC)

# run_one NAME SECONDS [LANGUAGE]
run_one() {
    local name=$1 seconds=$2 run=$1${3:+-$3} status=0
    [ $# -eq 2 ] || export LANG=$3
    mkdir -p "build/fuzz/corpus/$name" build/fuzz/findings
    local corpus=("build/fuzz/corpus/$name")
    [ ! -d "tests/fuzz/corpus/$name" ] || corpus+=("tests/fuzz/corpus/$name")
    "build/fuzz/tests/fuzz/$name" -max_total_time="$seconds" -max_len=1024 -timeout=20 -print_final_stats=1 \
        -artifact_prefix="build/fuzz/findings/$run-" "${corpus[@]}" >"build/fuzz/$run.log" 2>&1 || status=$?
    [ "$status" -eq 0 ] || tail -40 "build/fuzz/$run.log"
    echo "$run: status $status, $(grep -o 'number_of_executed_units: .*' "build/fuzz/$run.log" | tr -dc 0-9) inputs," \
        "$(find "build/fuzz/corpus/$name" -type f | wc -l) kept"
    return "$status"
}
export -f run_one
for name in "${targets[@]}"; do
    if [ "$name" = PathNamesFuzz ]; then
        printf "$name $(((seconds + ${#languages[@]} - 1) / ${#languages[@]})) %s\n" "${languages[@]}"
    else
        echo "$name $seconds"
    fi
done | xargs -P "$(nproc)" -I '{}' bash -c 'run_one {}'

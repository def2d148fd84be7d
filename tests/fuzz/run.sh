#!/usr/bin/env bash
# run.sh PRESET SECONDS [TARGET…]: runs the fuzz targets of a preset (fuzz and msan: libFuzzer; afl: AFL++), or those
# named, for some seconds each, as many at a time as there are processors. Starts from the corpus; what is new goes to
# build/PRESET/corpus/ or build/afl/out/, and an input that fails to build/PRESET/findings/ or build/afl/out/*/default/.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
preset=$1 seconds=$2
shift 2
targets=("$@")
[ $# -gt 0 ] || for program in build/"$preset"/tests/fuzz/*Fuzz; do targets+=("$(basename "$program")"); done
# The default character sets that names of files are tried in: one target, one process each.
languages=(xx_YY.UTF-8 xx_YY.ISO-8859-1 ja_JP.SJIS ja_JP.eucJP zh_CN.GB18030 zh_TW.BIG5 ko_KR.EUC)

# run_one PRESET NAME SECONDS [LANGUAGE]
run_one() {
    local build=build/$1 name=$2 seconds=$3 run=$2${4:+-$4} status=0
    local program=$build/tests/fuzz/$name corpus=$build/tests/fuzz/corpus/$name log=$build/$run.log
    [ $# -eq 3 ] || export LANG=$4
    if [ "$1" = afl ]; then
        local out=$build/out/$run
        mkdir -p "$out"
        # Its hints about the machine are none about the targets.
        AFL_SKIP_CPUFREQ=1 AFL_I_DONT_CARE_ABOUT_MISSING_CRASHES=1 AFL_NO_AFFINITY=1 AFL_NO_UI=1 AFL_AUTORESUME=1 \
            afl-fuzz -V "$seconds" -t 20000 -i "$corpus" -o "$out" -- "$program" >"$log" 2>&1 || status=$?
        [ "$status" -eq 0 ] || { tail -40 "$log" && return 1; }
        awk -v run="$run" '
            { value[$1] = $3 }
            END {
                print run ": " value["execs_done"] " inputs, " value["corpus_count"] " kept, " \
                    value["saved_crashes"] " failed, " value["saved_hangs"] " hung"
                exit value["saved_crashes"] + value["saved_hangs"] != 0
            }' "$out/default/fuzzer_stats"
        return
    fi
    mkdir -p "$build/corpus/$name" "$build/findings"
    "$program" -max_total_time="$seconds" -max_len=1024 -timeout=20 -print_final_stats=1 \
        -artifact_prefix="$build/findings/$run-" "$build/corpus/$name" "$corpus" >"$log" 2>&1 || status=$?
    [ "$status" -eq 0 ] || tail -40 "$log"
    echo "$run: status $status, $(grep -o 'number_of_executed_units: .*' "$log" | tr -dc 0-9) inputs," \
        "$(find "$build/corpus/$name" -type f | wc -l) kept"
    return "$status"
}
export -f run_one
for name in "${targets[@]}"; do
    if [ "$name" = PathNamesFuzz ]; then
        printf "$preset $name $(((seconds + ${#languages[@]} - 1) / ${#languages[@]})) %s\n" "${languages[@]}"
    else
        echo "$preset $name $seconds"
    fi
done | xargs -P "$(nproc)" -I '{}' bash -c 'run_one {}'

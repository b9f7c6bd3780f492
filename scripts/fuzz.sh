#!/usr/bin/env bash
# Fuzzing budget: builds the libFuzzer targets (fuzz preset, clang) and runs every one of them
# for SECONDS, one after the other, then prints executions and findings per target.
#
#   scripts/fuzz.sh SECONDS [TARGET...]
#
# Each target starts from its seeds in fuzz/corpus/ and grows a working corpus under
# build/fuzz/corpus-work/ (the seeds in the repository are not touched). Inputs that crash,
# leak, hang or run out of memory are kept under build/fuzz/findings/<target>/; the run of a
# target stops at its first finding. Exit status 1 when anything was found.
set -euo pipefail
cd "$(dirname "$0")/.."

if [[ $# -lt 1 || ! "$1" =~ ^[0-9]+$ || "$1" -lt 1 ]]; then
    echo "usage: scripts/fuzz.sh SECONDS [TARGET...]" >&2
    exit 2
fi
seconds=$1
shift

cmake --preset fuzz >/dev/null
build=build/fuzz
if [[ $# -gt 0 ]]; then
    targets=("$@")
else
    mapfile -t targets < <(sed -n 's/^tg_add_fuzzer(\([a-z_0-9]*\) .*/\1/p' fuzz/CMakeLists.txt)
fi
cmake --build --preset fuzz -j "$(nproc)" --target "${targets[@]}" >/dev/null

report=()
found_any=0
for target in "${targets[@]}"; do
    seeds=fuzz/corpus/$target
    [[ -d $seeds ]] || seeds=fuzz/corpus/${target#fuzz_}
    work=$build/corpus-work/$target
    findings=$build/findings/$target
    log=$build/findings/$target.log
    mkdir -p "$work" "$findings"
    corpora=("$work")
    [[ -d $seeds ]] && corpora+=("$seeds")

    echo "fuzzing $target for $seconds s" >&2
    set +e
    "$build/fuzz/$target" -max_total_time="$seconds" -timeout=10 -print_final_stats=1 \
        -artifact_prefix="$findings/" "${corpora[@]}" >"$log" 2>&1
    status=$?
    set -e

    runs=$(sed -n 's/^stat::number_of_executed_units: *\([0-9]*\)/\1/p' "$log" | tail -1)
    rate=$(sed -n 's/^stat::average_exec_per_sec: *\([0-9]*\)/\1/p' "$log" | tail -1)
    coverage=$(grep -o 'cov: [0-9]*' "$log" | tail -1 | cut -d' ' -f2)
    units=$(find "$work" -type f | wc -l)
    count=$(find "$findings" -maxdepth 1 -type f \( -name 'crash-*' -o -name 'leak-*' \
        -o -name 'timeout-*' -o -name 'oom-*' -o -name 'slow-unit-*' \) | wc -l)
    if [[ $status -ne 0 && $count -eq 0 ]]; then
        count="?"   # the fuzzer stopped without leaving an input: see the log
    fi
    [[ $count != 0 ]] && found_any=1
    report+=("$(printf '%-22s %8s s %14s %10s %8s %8s %9s' "$target" "$seconds" "${runs:-?}" \
        "${rate:-?}" "${coverage:-?}" "$units" "$count")")
done

printf '%-22s %10s %14s %10s %8s %8s %9s\n' target budget executions exec/s cov corpus findings
printf '%s\n' "${report[@]}"
echo "logs and findings: $build/findings/"
exit $found_any

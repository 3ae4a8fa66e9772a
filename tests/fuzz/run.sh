#!/usr/bin/env bash
# Builds the fuzz harnesses with clang (libFuzzer, ASan, UBSan) in build-fuzz/ and runs each for a
# bounded time, two at a time, from its corpus with its dictionary. A finding fails the run and is
# kept in build-fuzz/fuzz-work/<harness>/findings/; a missing clang or libFuzzer fails it too.
#   tests/fuzz/run.sh  (40 seconds per harness),  ZUV_FUZZ_SECONDS=600 tests/fuzz/run.sh smbios_walk
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
export root build=$root/build-fuzz seconds=${ZUV_FUZZ_SECONDS:-40}
harnesses=("$@")
[ ${#harnesses[@]} -gt 0 ] || harnesses=(smbios_walk config event_checks pipe_packet host_output sdr_cache)

command -v clang++ >/dev/null || { echo "fuzz: clang++ is missing (see .ci/packages.txt)"; exit 1; }
cmake -S "$root" -B "$build" -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS=-fsanitize=fuzzer-no-link -DZUV_SANITIZE=address \
    -DZUV_FUZZ=ON -DZUV_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j2 --target "${harnesses[@]/#/fuzz_}"

# One harness: its findings, its log, and a line with the executions it made.
fuzz_one() {
    local name=$1 work=$build/fuzz-work/$1 dict=()
    rm -rf "$work" && mkdir -p "$work/corpus" "$work/findings"
    [ ! -f "$root/tests/fuzz/$name.dict" ] || dict=(-dict="$root/tests/fuzz/$name.dict")
    if "$build/tests/fuzz/fuzz_$name" -max_total_time="$seconds" -timeout=10 "${dict[@]}" \
        -artifact_prefix="$work/findings/" -print_final_stats=1 "$work/corpus" "$root/tests/fuzz/corpus/$name" \
        >"$work/log" 2>&1; then
        echo "fuzz: $name: $(sed -n 's/^stat::number_of_executed_units: *//p' "$work/log") executions" \
            "in ${seconds}s, no findings"
    else
        echo "fuzz: $name FAILED"
        tail -n 40 "$work/log"  # libFuzzer names the finding and prints its bytes
        return 1
    fi
}
export -f fuzz_one
printf '%s\n' "${harnesses[@]}" | xargs -P 2 -I{} bash -c 'fuzz_one {}'

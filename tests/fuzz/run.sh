#!/bin/sh
# Builds the SMBIOS walk fuzzer with clang++ (libFuzzer, ASan, UBSan) and runs it for a
# bounded time from a seed corpus made by the image generator.
#   tests/fuzz/run.sh            # 30 seconds
#   ZUV_FUZZ_SECONDS=300 tests/fuzz/run.sh
# Skips (status 0) when clang++ or its libFuzzer runtime is missing; a finding fails it.
set -eu

root=$(cd "$(dirname "$0")/../.." && pwd)
seconds=${ZUV_FUZZ_SECONDS:-30}
cxx=${CLANGXX:-clang++}

if ! command -v "$cxx" >/dev/null 2>&1; then
    echo "fuzz: $cxx not found, skipped"
    exit 0
fi

work=$(mktemp -d "${TMPDIR:-/tmp}/zuv-fuzz.XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/corpus" "$work/findings"

if ! echo 'extern "C" int LLVMFuzzerTestOneInput(const unsigned char*, unsigned long) { return 0; }' |
        "$cxx" -x c++ -fsanitize=fuzzer - -o "$work/probe" >/dev/null 2>&1; then
    echo "fuzz: $cxx has no libFuzzer runtime, skipped"
    exit 0
fi

"$cxx" -std=c++17 -O1 -I"$root/sim/smbios" "$root/tests/fuzz/makeSmbiosSeeds.cpp" \
    "$root/sim/smbios/zuvSmbiosImage.cpp" -o "$work/make-seeds"
"$work/make-seeds" "$work/corpus"

"$cxx" -std=c++17 -g -O1 -fno-omit-frame-pointer -fsanitize=fuzzer,address,undefined \
    -fno-sanitize-recover=all -I"$root/lib" "$root/tests/fuzz/smbiosWalkFuzzer.cpp" \
    "$root/lib/platform/zuvSmbiosReader.cpp" "$root/lib/platform/zuvSmbiosUuid.cpp" \
    -o "$work/smbios-walk-fuzzer"

printf '"_SM_"\n"_DMI_"\n' >"$work/smbios.dict"
echo "fuzz: SMBIOS walk for ${seconds}s"
"$work/smbios-walk-fuzzer" -max_total_time="$seconds" -dict="$work/smbios.dict" \
    -artifact_prefix="$work/findings/" -print_final_stats=1 "$work/corpus" 2>"$work/log" || {
    tail -n 60 "$work/log"
    for f in "$work"/findings/*; do
        [ -e "$f" ] && { echo "finding: $f"; od -An -tx1 "$f" | head -n 20; }
    done
    exit 1
}
grep -E '^(stat::number_of_executed_units|Done)' "$work/log" || true
echo "fuzz: no findings"

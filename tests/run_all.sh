#!/usr/bin/env bash
# The whole test suite: installs what is missing, then runs the stages named at the bottom in
# order (README.md tells what each does). The builds are the presets of CMakePresets.json; their
# trees live in the checkout (build*/), never under /tmp, which the test sandbox replaces.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
bash tools/install-deps.sh
started=$SECONDS

# Every tracked C and C++ file is as clang-format (.clang-format) would write it.
stage_format() {
    git ls-files -z -- '*.c' '*.cc' '*.cpp' '*.h' '*.hpp' | xargs -0 clang-format --dry-run --Werror
}

# clang-tidy (.clang-tidy) over lib/ and client/ with the default preset's compile database, then
# cppcheck; any finding of either fails the stage. A suppression stands beside its line with
# the reason.
stage_analysis() {
    cmake --preset default >/dev/null
    git ls-files -z -- 'lib/*.cpp' 'client/*.cpp' ':!lib/tables/zuvPciVendorNames.cpp' |
        xargs -0 -P2 -n2 clang-tidy -p build --quiet 2> >(grep -v ' warnings\? generated\.$' >&2)
    cppcheck --std=c++17 --language=c++ -I lib -i lib/tables/zuvPciVendorNames.cpp --quiet -j2 \
        --enable=warning,performance,portability --inline-suppr --error-exitcode=1 \
        --template='{file}:{line}: {severity}: {message} [{id}]' lib client
}

stage_normal() {
    cmake --preset default >/dev/null
    cmake --build --preset default
    ctest --preset default
}

stage_asan() {
    cmake --preset asan >/dev/null
    cmake --build --preset asan
    ctest --preset asan
}

# Builds only the binaries of the tests labelled tsan.
stage_tsan() {
    cmake --preset tsan >/dev/null
    local tests
    tests=$(ctest --preset tsan -N | sed -n 's/^ *Test *#[0-9]*: *//p')
    [ -n "$tests" ] || return 0
    # shellcheck disable=SC2086
    cmake --build --preset tsan --target $tests
    ctest --preset tsan
}

# The product as a packager builds it, installed, consumed from outside and packaged.
stage_install() {
    cmake --preset release >/dev/null
    cmake --build --preset release
    bash tests/install/run.sh build-release
}

# The real code under strace, with each call on the files it writes failed or killed in turn.
stage_faults() {
    cmake --build --preset default --target zuvFaultDriver
    bash tests/faults/run.sh build/tests/faults/zuvFaultDriver
}

stage_fuzz() {
    bash tests/fuzz/run.sh
}

# Non-blank lines of the sources, build files and scripts that git knows of (tracked or new).
count_lines() {
    git ls-files -co --exclude-standard -- "$@" | grep -E '(\.(cpp|h|hpp|cc|c|py|sh)|CMakeLists\.txt)$' |
        xargs -r cat | grep -cv '^\s*$' || true
}

# Prints the size of the tests against the code they test; it is a figure, not a check.
print_test_size() {
    local tests code
    tests=$(count_lines 'tests/*')
    code=$(count_lines lib client sim tools bench ':!lib/tables/zuvPciVendorNames.cpp')
    echo "=== test size: $tests lines in tests/ against $code lines of code" \
        "(lib/ without the generated vendor table, client/, sim/, tools/, bench/): ratio" \
        "$(awk -v t="$tests" -v c="$code" 'BEGIN { printf "%.3f", t / c }')"
}

# ZUV_STAGES="asan install" runs only the stages named, in the order named.
read -r -a stages <<<"${ZUV_STAGES:-format analysis normal asan tsan install faults fuzz}"
for stage in "${stages[@]}"; do
    begun=$SECONDS
    echo "=== $stage ($((begun - started))s since start)"
    "stage_$stage"
    echo "=== $stage took $((SECONDS - begun))s"
done
print_test_size
echo "=== all test stages passed in $((SECONDS - started))s"

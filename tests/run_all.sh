#!/usr/bin/env bash
# The whole test suite: installs what is missing, then a normal build with every test, an
# ASan+UBSan build with every test but the kernel ones, a TSan build of the concurrency tests,
# the injected faults on the files the library writes, and a bounded fuzz run of every parser
# (clang). Build trees live in the checkout (build*/), never under /tmp, which the test sandbox
# replaces.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
bash tools/install-deps.sh
jobs=2
started=$SECONDS
# Marks a stage with the seconds gone so far, so that the suite's time budget can be watched.
stage() {
    echo "=== $1 ($((SECONDS - started))s since start)"
}

stage "normal build"
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j$jobs
(cd build && ctest --output-on-failure -j$jobs)

stage "ASan+UBSan build"
cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DZUV_SANITIZE=address -DZUV_BUILD_BENCH=OFF >/dev/null
cmake --build build-asan -j$jobs
(cd build-asan && ctest --output-on-failure -j$jobs -LE kernel)

stage "TSan build (concurrency tests)"
cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=Debug -DZUV_SANITIZE=thread -DZUV_BUILD_BENCH=OFF >/dev/null
tsan_tests=$(cd build-tsan && ctest -N -L tsan | sed -n 's/^ *Test *#[0-9]*: *//p')
if [ -n "$tsan_tests" ]; then
    # shellcheck disable=SC2086
    cmake --build build-tsan -j$jobs --target $tsan_tests
    (cd build-tsan && ctest --output-on-failure -L tsan)
fi

stage "injected faults"
cmake --build build -j$jobs --target zuvFaultDriver
bash tests/faults/run.sh build/tests/faults/zuvFaultDriver

stage "fuzzing"
bash tests/fuzz/run.sh
echo "=== all test stages passed in $((SECONDS - started))s"

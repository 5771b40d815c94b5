#!/usr/bin/env bash
# Checks the layer order of the includes, builds everything and runs every test: the GCC
# build with its tests, then a clang build with address and undefined-behaviour sanitizers
# that runs the tests again and gives each fuzz target a short run, then the lock-free
# cells and the editor's wake-up thread under the thread sanitizer. Tests that need an X
# server start an Xvfb of their own.
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=$(nproc)

bash tools/check-layers.sh

cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$jobs"
ctest --test-dir build -j"$jobs" --output-on-failure

cmake -S . -B build-san -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DTIDEWAKE_SANITIZE=ON -DTIDEWAKE_FUZZ=ON -DTIDEWAKE_BENCH=OFF >/dev/null
cmake --build build-san -j"$jobs"
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --test-dir build-san -j"$jobs" --output-on-failure

cmake -S . -B build-tsan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DTIDEWAKE_TSAN=ON -DTIDEWAKE_BENCH=OFF >/dev/null
cmake --build build-tsan -j"$jobs" --target tests_platform tests_host
TSAN_OPTIONS=halt_on_error=1 build-tsan/tests/platform/tests_platform --gtest_filter='SlotCell*:Thread*:X11WindowTest.AHost*'
TSAN_OPTIONS=halt_on_error=1 build-tsan/tests/host/tests_host

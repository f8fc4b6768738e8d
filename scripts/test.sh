#!/usr/bin/env bash
# Installs what is needed, builds everything and runs the whole test suite,
# then the threaded parts again under ThreadSanitizer and AddressSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build
ctest --test-dir build --output-on-failure -j2

# Sanitizer builds: the core's tests only (the stress test, the engine, the
# data file and the triggers), each in a build folder of its own.
for sanitizer in TSAN ASAN; do
  dir="build-$(echo "$sanitizer" | tr 'A-Z' 'a-z')"
  cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCADRELLE_$sanitizer=ON -DCADRELLE_BENCH=OFF
  cmake --build "$dir" --target core_tests
  echo "== core_tests under $sanitizer"
  TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" ASAN_OPTIONS="detect_leaks=1" \
    TZ=Europe/Berlin "$dir/tests/core_tests" --gtest_brief=1
done

#!/bin/sh
# The whole test suite: a release build with every test (real hosts and the fuzzer included),
# in CI the Debian package installed on the machine and removed again, the same test programs
# under valgrind, then AddressSanitizer + UndefinedBehaviorSanitizer and ThreadSanitizer builds
# with their tests.
set -e
cd "$(dirname "$0")/.."
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DHVT_WERROR=ON
cmake --build build -j2
ctest --test-dir build -j2 --output-on-failure
tests/install/system.sh build
tests/run-valgrind.sh build
tests/sanitizers.sh all

#!/bin/sh
# The whole test suite: a release build with every test, then the same tests under valgrind.
set -e
cd "$(dirname "$0")/.."
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release
cmake --build build -j2
ctest --test-dir build -j2 --output-on-failure
tests/run-valgrind.sh build

#!/bin/sh
# Builds the project twice more and runs the tests there:
#   build-asan: AddressSanitizer + UndefinedBehaviorSanitizer, every test except the real hosts
#               (they cannot load an instrumented module without the sanitizer runtime) and the
#               one that measures resident memory (ASan holds freed memory in quarantine).
#   build-tsan: ThreadSanitizer, the tests labelled "threads" or "x11" (the editor's end-to-end
#               tests are meant to carry both, but gtest_discover_tests of CMake 3.25 keeps only
#               the first label of a list).
# Usage: tests/sanitizers.sh [asan|tsan|all]   (default all; JOBS sets the build parallelism)
set -eu

root=$(cd "$(dirname "$0")/.." && pwd)
jobs=${JOBS:-2}
which=${1:-all}

run_asan() {
    cmake -S "$root" -B "$root/build-asan" -DCMAKE_BUILD_TYPE=Release -DHVT_SANITIZE=ON -DHVT_WERROR=ON \
        -DHVT_BENCHMARKS=OFF
    cmake --build "$root/build-asan" -j"$jobs"
    # Leaks are valgrind's to find (tests/run-valgrind.sh): LeakSanitizer reports the start-up
    # caches of cairo and pixman as lost once the module that loaded them is closed, and by
    # then it cannot name or suppress their frames.
    ASAN_OPTIONS=abort_on_error=1:detect_leaks=0:detect_stack_use_after_return=1 \
    UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1:abort_on_error=1 \
        ctest --test-dir "$root/build-asan" -j"$jobs" --output-on-failure -LE realhost \
            -E 'EditorInX.TwoHundredCloseOpenCyclesDoNotGrowMemory'
}

run_tsan() {
    cmake -S "$root" -B "$root/build-tsan" -DCMAKE_BUILD_TYPE=Release -DHVT_TSAN=ON -DHVT_WERROR=ON \
        -DHVT_BENCHMARKS=OFF
    cmake --build "$root/build-tsan" -j"$jobs"
    TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
        ctest --test-dir "$root/build-tsan" -j"$jobs" --output-on-failure -L 'threads|x11'
}

case "$which" in
asan) run_asan ;;
tsan) run_tsan ;;
all) run_asan && run_tsan ;;
*) echo "usage: $0 [asan|tsan|all]" >&2; exit 2 ;;
esac

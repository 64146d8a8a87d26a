#!/bin/sh
# Runs every test program of a build under valgrind's memcheck: any invalid access, use of
# uninitialised memory or definite leak fails the run.
set -e
build=${1:-build}
status=0
for program in $(find "$build/tests" -type f -perm -u+x -name "*_tests" | sort); do
  echo "== valgrind $program"
  # Debug information is kept after dlclose so that leaks inside the module can be named.
  # Fair scheduling: a test thread that never blocks must not starve the others.
  if ! valgrind --quiet --fair-sched=yes --error-exitcode=99 --leak-check=full \
       --errors-for-leak-kinds=definite --keep-debuginfo=yes \
       --suppressions="$(dirname "$0")/valgrind.supp" \
       "$program" --gtest_brief=1 > "$program.valgrind.log" 2>&1; then
    cat "$program.valgrind.log"
    status=1
  fi
  tail -n 3 "$program.valgrind.log"
done
exit $status

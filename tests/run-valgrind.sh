#!/bin/sh
# Runs every test program of a build under valgrind's memcheck: any invalid access, use of
# uninitialised memory or definite leak fails the run.
set -e
build=${1:-build}
status=0
for program in "$build"/tests/*_tests; do
  [ -x "$program" ] || continue
  echo "== valgrind $program"
  if ! valgrind --quiet --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=definite \
       "$program" --gtest_brief=1 > "$program.valgrind.log" 2>&1; then
    cat "$program.valgrind.log"
    status=1
  fi
  tail -n 3 "$program.valgrind.log"
done
exit $status

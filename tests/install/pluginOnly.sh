#!/bin/sh
# The README's plug-in-only build, configured as if GoogleTest and Google Benchmark were not
# installed (a find_package of either then fails the configure), built and installed: the
# plug-ins and their documents, no program.
#   pluginOnly.sh SOURCE_DIR BUILD_DIR WITH_LV2(0|1)
set -eu
source=$1
build=$2
with_lv2=$3
# Configured afresh every run; the objects of the last run are reused.
rm -f "$build/CMakeCache.txt"
cmake -S "$source" -B "$build" -DBUILD_TESTING=OFF -DHVT_BENCHMARKS=OFF -DHVT_TOOLS=OFF \
    -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON -DCMAKE_DISABLE_FIND_PACKAGE_benchmark=ON > /dev/null
cmake --build "$build" -j2 > "$build.log" 2>&1 || { cat "$build.log"; exit 1; }
exec sh "$(dirname "$0")/installTree.sh" "$build" 0 "$with_lv2"

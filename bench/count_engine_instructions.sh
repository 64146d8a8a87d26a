#!/bin/sh
# Instructions per stereo frame of the plain loops (the engine's reference and the loop that keeps
# every field in memory, bench/FieldsInMemoryLoop.h) and the vector engine, counted by callgrind
# inside the engines' process functions only (table building and start-up excluded).
#   bench/count_engine_instructions.sh [build directory [factory program ...]]
# The programs default to 1 "Waves" and 9 "Rotary".
set -e
build=${1:-build}
[ $# -gt 0 ] && shift
programs=${*:-1 9}
driver="$build/bench/engine_instructions"
frames=1048576
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

count() { # engine block function program
    valgrind --tool=callgrind --callgrind-out-file="$out/cg" --toggle-collect="$3" \
        "$driver" "$1" "$2" "$frames" "$4" >/dev/null 2>&1
    awk -v frames="$frames" '/^(summary|totals):/ { printf "%.1f", $2 / frames; exit }' "$out/cg"
}

printf '%-8s %-6s %9s %8s %8s %8s\n' program block in-memory plain sse2 avx2
for program in $programs; do
    for block in 32 512 4096; do
        inMemory=$(count in-memory "$block" 'FieldsInMemoryEffect::processReplacing*' "$program")
        plain=$(count plain "$block" 'processReference*' "$program")
        sse2=$(count sse2 "$block" 'ModulationEngine::process*' "$program")
        avx2=$(count avx2 "$block" 'ModulationEngine::process*' "$program")
        printf '%-8s %-6s %9s %8s %8s %8s\n' "$program" "$block" "$inMemory" "$plain" "$sse2" "$avx2"
    done
done

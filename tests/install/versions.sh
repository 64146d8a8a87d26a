#!/bin/sh
# One version everywhere a user can see one: the project's (CMakeLists.txt) in the changelog's
# latest entry, in --version of every program we ship, and in the LV2 bundle (LV2 has
# no major version: minor and micro). The package takes it from CMake directly.
#   versions.sh BUILD_DIR VERSION BUNDLE_DIR|- PROGRAM...
set -eu
build=$1
version=$2
bundle=$3
shift 3
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

latest=$(gzip -dc "$build/doc/changelog.gz" | head -n 1)
case "$latest" in
"hvtremolo ($version) "*) ;;
*) fail "the latest entry of CHANGELOG.md is not $version: $latest" ;;
esac

for program in "$@"; do
    name=$(basename "$program")
    said=$("$program" --version 2>&1) || fail "$name --version fails"
    [ "$said" = "$name $version" ] || fail "$name --version does not say $name $version: $said"
done

if [ "$bundle" != - ]; then
    minor=$(echo "$version" | cut -d. -f2)
    micro=$(echo "$version" | cut -d. -f3)
    for property in "minorVersion $minor" "microVersion $micro"; do
        grep -rqE "lv2:${property% *}[[:space:]]+${property#* }[[:space:]]*[;.]" "$bundle"/*.ttl ||
            fail "the LV2 bundle does not say lv2:$property"
    done
fi
[ "$failures" = 0 ]
echo "version $version everywhere it was looked for"

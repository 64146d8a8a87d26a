#!/bin/sh
# cmake --install as a user or a packager runs it: the exact file list under DESTDIR and under a
# --prefix of its own, the installed programs finding the installed module, the LV2 bundle found
# by an LV2 host's own lookup, and the uninstall script removing exactly what was installed.
#   installTree.sh BUILD_DIR WITH_TOOLS(0|1) WITH_LV2(0|1)
set -eu
build=$1
with_tools=$2
with_lv2=$3

scratch=$(mktemp -d)
manifest=$build/install_manifest.txt
# Installing here rewrites the build's manifest, which a user's `uninstall.cmake` reads: keep the
# one of their real install.
if [ -e "$manifest" ]; then cp -p "$manifest" "$scratch/manifest.saved"; fi
restore() {
    if [ -e "$scratch/manifest.saved" ]; then cp -p "$scratch/manifest.saved" "$manifest"
    else rm -f "$manifest"; fi
    rm -rf "$scratch"
}
trap restore EXIT

failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

# Every file an install puts under its prefix, and nothing else.
expected_files() {
    echo lib/vst/HvTremolo.so
    echo share/doc/hvtremolo/changelog.gz
    echo share/doc/hvtremolo/copyright
    if [ "$with_tools" = 1 ]; then
        for program in hvtremolo-editor hvtremolo-panel hvtremolo-render; do
            echo "bin/$program"
            echo "share/man/man1/$program.1.gz"
        done
    fi
    if [ "$with_lv2" = 1 ]; then
        for file in manifest.ttl HvTremolo.ttl presets.ttl HvTremolo_dsp.so HvTremolo_ui.so; do
            echo "lib/lv2/HvTremolo.lv2/$file"
        done
    fi
}

# check_tree ROOT PREFIX: the files under ROOT are exactly the expected ones under PREFIX (beside
# the other plug-in that a user's prefix holds).
check_tree() {
    expected_files | sed "s|^|$2|" | sort > "$scratch/expected"
    (cd "$1" && find . ! -type d ! -path ./lib/vst/Other.so | sed 's|^\./||' | sort) > "$scratch/found"
    diff -u "$scratch/expected" "$scratch/found" || fail "the files under $1 differ from the list"
}

# A packager's install: DESTDIR, prefix /usr.
DESTDIR=$scratch/destdir cmake --install "$build" --prefix /usr > /dev/null
check_tree "$scratch/destdir" usr/

# A user's own prefix, which already holds someone else's plug-in.
prefix=$scratch/prefix
mkdir -p "$prefix/lib/vst"
echo other > "$prefix/lib/vst/Other.so"
cmake --install "$build" --prefix "$prefix" > /dev/null
check_tree "$prefix" ""

if [ "$with_tools" = 1 ]; then
    # Installed in bin, the programs load ../lib/vst/HvTremolo.so, the only module there is.
    "$prefix/bin/hvtremolo-render" --list > "$scratch/list" 2>&1 ||
        fail "installed hvtremolo-render does not load the installed module: $(cat "$scratch/list")"
    grep -q "Wurli Classic" "$scratch/list" || fail "hvtremolo-render --list shows no programs"
    # Without a display the editor stops after loading the module, at opening its window.
    env -u DISPLAY "$prefix/bin/hvtremolo-editor" > "$scratch/editor" 2>&1 || true
    grep -q "cannot open a window" "$scratch/editor" ||
        fail "installed hvtremolo-editor does not load the installed module: $(cat "$scratch/editor")"
    mv "$prefix/lib/vst/HvTremolo.so" "$scratch/moved.so"
    if "$prefix/bin/hvtremolo-render" --list > "$scratch/list" 2>&1; then
        fail "hvtremolo-render ran without the installed module: it loaded another one"
    fi
    mv "$scratch/moved.so" "$prefix/lib/vst/HvTremolo.so"
fi

if [ "$with_lv2" = 1 ]; then
    LV2_PATH=$prefix/lib/lv2 lv2ls > "$scratch/lv2ls" 2>&1 || true
    grep -qx "urn:halvo:hvtremolo" "$scratch/lv2ls" ||
        fail "lv2ls does not list urn:halvo:hvtremolo in the installed bundle: $(cat "$scratch/lv2ls")"
fi

# Uninstall: every installed file and our own folders go; the other plug-in and the shared
# folders stay.
cmake -P "$build/uninstall.cmake" > /dev/null
(cd "$prefix" && find . | sed 's|^\./||' | sort) > "$scratch/left"
printf '%s\n' . bin lib lib/lv2 lib/vst lib/vst/Other.so share share/doc share/man share/man/man1 |
    sort > "$scratch/expected-left"
# Folders a plug-in-only install never made.
if [ "$with_tools" = 0 ]; then
    grep -vx -e bin -e share/man -e share/man/man1 "$scratch/expected-left" > "$scratch/e" || true
    mv "$scratch/e" "$scratch/expected-left"
fi
if [ "$with_lv2" = 0 ]; then
    grep -vx lib/lv2 "$scratch/expected-left" > "$scratch/e" || true
    mv "$scratch/e" "$scratch/expected-left"
fi
diff -u "$scratch/expected-left" "$scratch/left" || fail "uninstall left or removed the wrong files"

[ "$failures" = 0 ] || exit 1
echo "install tree: $(expected_files | wc -l) files, as listed; uninstall removed them all"

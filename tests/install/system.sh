#!/bin/sh
# The Debian package on this very machine, as a user gets it: made by cpack, checked by lintian,
# installed with apt. Then, with no plug-in path set and a home of its own: Ardour finds the VST
# module in its default folders, lv2ls and Ardour list the LV2 plug-in, hvtremolo-render renders the demo
# from /usr/bin and man shows its page. Finally apt remove, and every file the package put on
# the system must be gone.
# It needs root and changes the system, so it runs only when CI=true or HVT_SYSTEM_TESTS=1; it
# leaves an hvtremolo installed by someone else alone, and removes its own in any case.
#   tests/install/system.sh [BUILD_DIR]   (default build)
set -eu
if [ "${CI:-}" != true ] && [ "${HVT_SYSTEM_TESTS:-}" != 1 ]; then
    echo "tests/install/system.sh: skipped: it installs a package (HVT_SYSTEM_TESTS=1 runs it)"
    exit 0
fi
[ "$(id -u)" = 0 ] || { echo "tests/install/system.sh: needs root (apt install)" >&2; exit 1; }
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "${1:-$here/../../build}" && pwd)
if [ "$(dpkg-query -W -f='${db:Status-Status}' hvtremolo 2>/dev/null)" = installed ]; then
    echo "tests/install/system.sh: hvtremolo is installed already; not replacing it" >&2
    exit 1
fi

failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
scratch=$(mktemp -d)
cleanup() {
    if [ "$(dpkg-query -W -f='${db:Status-Status}' hvtremolo 2>/dev/null)" = installed ]; then
        DEBIAN_FRONTEND=noninteractive apt-get remove -y hvtremolo > /dev/null 2>&1 || true
    fi
    rm -rf "$scratch"
}
trap cleanup EXIT

# The package.
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
deb=$build/hvtremolo_${version}_$(dpkg --print-architecture).deb
rm -f "$deb"
(cd "$build" && cpack -G DEB > "$scratch/cpack.log" 2>&1) || { cat "$scratch/cpack.log"; exit 1; }
[ -f "$deb" ] || { echo "FAIL: cpack made no $deb"; cat "$scratch/cpack.log"; exit 1; }
echo "package $(basename "$deb"): $(stat -c %s "$deb") bytes"
[ "$(dpkg-deb -f "$deb" Version)" = "$version" ] || fail "package version is not $version"
depends=$(dpkg-deb -f "$deb" Depends)
echo "Depends: $depends"
for library in libc6 libstdc++6 libgcc-s1 libcairo2 libxcb1 libsndfile1; do
    echo "$depends" | tr , '\n' | sed 's/^ *//; s/ .*//' | grep -qxF "$library" ||
        fail "the package does not depend on $library"
done
lintian --fail-on error "$deb" 2>&1 | grep -v "running with root privileges" || true
lintian --fail-on error "$deb" > /dev/null 2>&1 || fail "lintian reports errors"

# Installed as a user would.
DEBIAN_FRONTEND=noninteractive apt-get install -y "$deb" > "$scratch/apt.log" 2>&1 ||
    { cat "$scratch/apt.log"; exit 1; }
dpkg-query -L hvtremolo | sort > "$scratch/owned"
while read -r path; do [ -d "$path" ] || echo "$path"; done < "$scratch/owned" > "$scratch/files"
echo "installed $(wc -l < "$scratch/files") files"

# Every check runs as a fresh user would: no plug-in path, a new home.
mkdir "$scratch/home"
user() { env -i HOME="$scratch/home" PATH=/usr/bin:/bin LANG=C.UTF-8 "$@"; }

# Ardour (7.3 looks in /usr/lib/vst among its default folders): its scanner reads the module,
# as Ardour runs it on new plug-ins, then a session lists the plug-in with where Ardour found it.
scanner=/usr/lib/ardour7/ardour-vst-scanner
user env LD_LIBRARY_PATH="$(dirname "$scanner")" "$scanner" -f /usr/lib/vst/HvTremolo.so \
    > "$scratch/scan.log" 2>&1 || fail "Ardour's scanner cannot read /usr/lib/vst/HvTremolo.so: $(cat "$scratch/scan.log")"
# Ardour 7.3's Lua session dies now and then on its own (see tests/realhost): such a run is
# made again.
for attempt in 1 2 3 4 5; do
    rm -rf "$scratch/session"
    status=0
    (cd "$scratch" && user ardour7-lua "$here/ardourFinds.lua" "$scratch/session") \
        > "$scratch/ardour.log" 2>&1 || status=$?
    [ "$status" = 134 ] || [ "$status" = 139 ] || break
    echo "Ardour crashed (status $status), attempt $attempt"
done
grep -F "LXVST 1213617208 HvTremolo 32-Bit, Halvo Music, /usr/lib/vst/HvTremolo.so" "$scratch/ardour.log" ||
    fail "Ardour does not list HvTremolo in /usr/lib/vst: $(cat "$scratch/ardour.log")"

# LV2 hosts, Ardour among them, when this build has the bundle.
if grep -q '^/usr/lib/lv2/HvTremolo.lv2/manifest.ttl$' "$scratch/files"; then
    user lv2ls | grep -x "urn:halvo:hvtremolo" || fail "lv2ls does not list urn:halvo:hvtremolo"
    grep -F "LV2 urn:halvo:hvtremolo HvTremolo, Halvo Music" "$scratch/ardour.log" ||
        fail "Ardour does not list the LV2 HvTremolo"
else
    echo "note: this build has no LV2 bundle; the LV2 check did not run"
fi

# The command-line host from /usr/bin, on its own module.
[ "$(user sh -c 'command -v hvtremolo-render')" = /usr/bin/hvtremolo-render ] ||
    fail "hvtremolo-render is not /usr/bin/hvtremolo-render"
if user hvtremolo-render --help 2>&1 | grep -q -- --demo; then
    (cd "$scratch" && user hvtremolo-render -q --demo demo.wav) || fail "hvtremolo-render --demo fails"
else
    # Until the --demo form of the render rework is merged: the older form renders the demo.
    echo "note: this hvtremolo-render has no --demo; rendered the demo with its older form"
    (cd "$scratch" && user hvtremolo-render -q demo.wav) || fail "hvtremolo-render fails"
fi
# Six seconds of stereo float at 44.1 kHz.
[ "$(stat -c %s "$scratch/demo.wav" 2>/dev/null || echo 0)" -gt 2000000 ] ||
    fail "hvtremolo-render wrote no demo"

# The manual page.
user man -P cat hvtremolo-render 2> "$scratch/man.err" | grep -F "hvtremolo-render - run a sound file" ||
    fail "man hvtremolo-render does not show the page: $(cat "$scratch/man.err")"

# Removed: nothing of it stays.
DEBIAN_FRONTEND=noninteractive apt-get remove -y hvtremolo > "$scratch/apt.log" 2>&1 ||
    { cat "$scratch/apt.log"; exit 1; }
while read -r path; do
    if [ -e "$path" ] || [ -L "$path" ]; then fail "$path is left after apt remove"; fi
done < "$scratch/files"
for folder in /usr/lib/lv2/HvTremolo.lv2 /usr/share/doc/hvtremolo; do
    [ ! -e "$folder" ] || fail "$folder is left after apt remove"
done
status=$(dpkg-query -W -f='${db:Status-Status}' hvtremolo 2>/dev/null || true)
[ -z "$status" ] || [ "$status" = not-installed ] || fail "dpkg still knows hvtremolo as $status"

[ "$failures" = 0 ] || exit 1
echo "tests/install/system.sh: the package installs, is found by Ardour and man, and removes cleanly"

#!/bin/sh
# Installs what HvTremolo needs on Debian 12: the build dependencies (dpkg-dev and file for
# cpack -G DEB), and with --test also what the test suite uses (valgrind, an X server and
# xdotool for the editor, Ardour, Qtractor and MusE for the real-host tests, lintian, lv2ls and
# man for the install tests). Asks for sudo when not run as root.
set -e
as_root=
[ "$(id -u)" = 0 ] || as_root=sudo
packages="g++ cmake make pkg-config binutils libcairo2-dev libxcb1-dev libsndfile1-dev
  libgtest-dev libgmock-dev libbenchmark-dev fonts-dejavu-core dpkg-dev file"
if [ "${1:-}" = --test ]; then
  packages="$packages valgrind xvfb xdotool ardour qtractor muse lintian lilv-utils man-db"
fi
$as_root env DEBIAN_FRONTEND=noninteractive apt-get update
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $packages

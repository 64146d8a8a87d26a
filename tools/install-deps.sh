#!/bin/sh
# Installs what HvTremolo needs on Debian 12: the build dependencies (dpkg-dev and file for
# cpack -G DEB), and with --test also what the test suite uses (valgrind, an X server and
# xdotool for the editor, Ardour, Qtractor and MusE for the real-host tests, Debian's LV2 tools,
# jalv and a JACK server for the LV2 edition, ImageMagick for screenshots, lintian and man for
# the install tests). Asks for sudo when not run as root.
set -e
as_root=
[ "$(id -u)" = 0 ] || as_root=sudo
packages="g++ cmake make pkg-config binutils libcairo2-dev libxcb1-dev libsndfile1-dev
  lv2-dev libgtest-dev libgmock-dev libbenchmark-dev liblilv-dev libjack-jackd2-dev
  fonts-dejavu-core dpkg-dev file"
if [ "${1:-}" = --test ]; then
  packages="$packages valgrind xvfb xdotool ardour qtractor muse lilv-utils serdi sordi jalv
    jackd2 imagemagick lintian man-db"
fi
$as_root env DEBIAN_FRONTEND=noninteractive apt-get update
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $packages

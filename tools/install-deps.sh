#!/bin/sh
# Installs what building and testing HvTremolo needs on Debian 12 (run as root).
set -e
export DEBIAN_FRONTEND=noninteractive
apt-get update
apt-get install -y --no-install-recommends \
  g++ cmake make pkg-config binutils \
  libcairo2-dev libxcb1-dev libsndfile1-dev \
  libgtest-dev libgmock-dev libbenchmark-dev \
  fonts-dejavu-core valgrind xvfb xdotool \
  ardour qtractor muse

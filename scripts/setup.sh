#!/bin/sh
# Installs the Debian packages qel needs for its builds, tests and examples.
# Safe to run again; needs root (or sudo) on a Debian 12 machine.
set -eu
packages="cmake ninja-build g++ googletest libbenchmark-dev
  gcc-arm-none-eabi libnewlib-arm-none-eabi libstdc++-arm-none-eabi-newlib qemu-system-arm
  binutils-arm-none-eabi clang-format clang-tidy pkgconf
  libsndfile1-dev libpng-dev
  python3-dev pybind11-dev python3-numpy python3-scipy python3-pytest python3-matplotlib $*"
missing=""
for p in $packages; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing="$missing $p"
done
[ -z "$missing" ] && exit 0
SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO=sudo
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -q
# shellcheck disable=SC2086
$SUDO apt-get install -y -q --no-install-recommends $missing

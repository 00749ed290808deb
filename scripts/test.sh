#!/bin/sh
# Sets up the machine, then builds and runs every test: the host suite and the
# same suite cross-built for the Cortex-M33 and run under QEMU.
set -eu
cd "$(dirname "$0")/.."
./scripts/setup.sh

for preset in host m33; do
  echo "==== $preset: configure and build"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  echo "==== $preset: tests"
  ctest --preset "$preset"
  echo "==== $preset: installed package used by C and C++ consumer projects"
  ./scripts/consumer.sh "$preset"
done
echo "==== all suites passed (host and Cortex-M33)"

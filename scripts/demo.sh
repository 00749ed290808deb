#!/bin/sh
# Sets up the machine, builds qel for the host and the Cortex-M33, and runs the
# example on both (the M33 one under QEMU).
set -eu
cd "$(dirname "$0")/.."
./scripts/setup.sh
for preset in host m33; do
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" --target qel_quickstart >/dev/null
done
echo "==== host"
./build/host/examples/qel_quickstart
echo "==== Cortex-M33 (QEMU mps2-an505)"
./cmake/qemu-m33.sh build/m33/examples/qel_quickstart

#!/bin/sh
# Builds and runs the benchmarks: M33 instruction counts under QEMU -icount,
# then host timings. The tables in BENCHMARKS.md come from this script.
set -eu
cd "$(dirname "$0")/.."
./scripts/setup.sh
cmake --preset m33 >/dev/null && cmake --build --preset m33 --target qel_m33_bench >/dev/null
echo "==== Cortex-M33 instructions (QEMU mps2-an505, -icount shift=0)"
QEL_QEMU_EXTRA="-icount shift=0" ./cmake/qemu-m33.sh build/m33/bench/m33/qel_m33_bench
if [ "${1:-}" != "--m33-only" ]; then
  cmake --preset host >/dev/null && cmake --build --preset host --target qel_host_bench >/dev/null
  echo "==== host timings"
  ./build/host/bench/host/qel_host_bench --benchmark_min_time=0.05
fi

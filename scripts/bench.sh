#!/bin/sh
# Builds and runs the benchmarks: on the M33, exact instruction counts (QEMU
# -icount) and estimated cycles (QEMU's instruction trace priced with
# bench/m33/m33-cycle-table.txt), for both multiply-accumulate forms; then host
# timings. The tables in BENCHMARKS.md come from this script: the M33 table
# below its heading line can be pasted as it is.
set -eu
cd "$(dirname "$0")/.."
./scripts/setup.sh
python3 bench/m33/m33_cycles.py --self-test >/dev/null
for preset in m33 m33-vmla; do
  cmake --preset "$preset" >/dev/null
  nice cmake --build --preset "$preset" --target qel_m33_bench >/dev/null
done
echo "==== Cortex-M33: instructions and estimated cycles (QEMU mps2-an505; QEL_MAC=split, vmla)"
python3 bench/m33/m33_cycles.py --bench split=build/m33/bench/m33/qel_m33_bench \
  vmla=build/m33-vmla/bench/m33/qel_m33_bench
if [ "${1:-}" != "--m33-only" ]; then
  cmake --preset host >/dev/null && cmake --build --preset host --target qel_host_bench >/dev/null
  echo "==== host timings"
  ./build/host/bench/host/qel_host_bench --benchmark_min_time=0.05
fi

#!/bin/sh
# Sets up the machine, builds qel for the host and the Cortex-M33, and runs the
# demo: one qel-denoise frame counted on the M33 under QEMU, then qel-denoise on
# its embedded test signal, writing out/denoised.wav and out/denoised.png
# (and out/noisy.wav, its input) and printing its report.
set -eu
cd "$(dirname "$0")/.."
./scripts/setup.sh

log=build/demo-build.log
mkdir -p build out
build() {
  preset="$1"
  shift
  { cmake --preset "$preset" && cmake --build --preset "$preset" --target "$@"; } >"$log" 2>&1 || {
    cat "$log"
    echo "demo.sh: the $preset build failed (log above)" >&2
    exit 1
  }
}
build host qel_quickstart qel-denoise
build m33 qel_quickstart qel_m33_frame_cost

echo "==== quickstart on the host"
./build/host/examples/qel_quickstart
echo "==== quickstart on the Cortex-M33 (QEMU mps2-an505)"
./cmake/qemu-m33.sh build/m33/examples/qel_quickstart

echo "==== qel-denoise: one frame's library calls on the Cortex-M33 (QEMU, -icount shift=0)"
if cost=$(QEL_QEMU_EXTRA="-icount shift=0" ./cmake/qemu-m33.sh build/m33/examples/qel_m33_frame_cost); then
  echo "$cost" | grep -v '^frame_instructions='
  m33=$(echo "$cost" | sed -n 's/^frame_instructions=//p')
else
  echo "demo.sh: the M33 frame count failed; the report will say it was not measured" >&2
  m33=""
fi

echo "==== qel-denoise on its embedded test signal"
./build/host/examples/qel-denoise -o out/denoised.wav --write-input out/noisy.wav \
  ${m33:+--m33-instructions "$m33"}

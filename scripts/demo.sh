#!/bin/sh
# Sets up the machine, builds qel for the host and the Cortex-M33, and runs the
# demo: one whole qel-denoise frame costed on the M33 under QEMU, then
# qel-denoise on its embedded test signal, writing out/denoised.wav and
# out/denoised.png (and out/noisy.wav, its input) and printing its report, and
# the same run on the M33, whose output must be the host's, byte for byte.
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
build m33 qel_quickstart qel-denoise qel_m33_frame_cost

echo "==== quickstart on the host"
./build/host/examples/qel_quickstart
echo "==== quickstart on the Cortex-M33 (QEMU mps2-an505)"
./cmake/qemu-m33.sh build/m33/examples/qel_quickstart

echo "==== qel-denoise: one whole frame on the Cortex-M33 (QEMU mps2-an505)"
if cost=$(./scripts/m33_frame_cost.sh cost); then
  echo "$cost" | grep -v '^frame_'
  instructions=$(echo "$cost" | sed -n 's/^frame_instructions=//p')
  cycles=$(echo "$cost" | sed -n 's/^frame_cycles=//p')
else
  echo "demo.sh: the M33 frame count failed; the report will say it was not measured" >&2
  instructions="" cycles=""
fi

echo "==== qel-denoise on its embedded test signal"
./build/host/examples/qel-denoise -o out/denoised.wav --write-input out/noisy.wav \
  ${instructions:+--m33-instructions "$instructions"} ${cycles:+--m33-cycles "$cycles"}

echo "==== the same run on the Cortex-M33 (QEMU, files through semihosting)"
./cmake/qemu-m33.sh build/m33/examples/qel-denoise -q -o out/denoised-m33.wav >/dev/null
if cmp out/denoised.wav out/denoised-m33.wav; then
  echo "out/denoised-m33.wav is out/denoised.wav, byte for byte"
else
  echo "demo.sh: the Cortex-M33 output differs from the host's" >&2
  exit 1
fi

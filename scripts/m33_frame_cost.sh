#!/bin/sh
# One whole qel-denoise frame on the Cortex-M33 (QEMU mps2-an505): instructions
# and estimated cycles per stage, the FFT included, the load at 150 MHz, and
# the frame's memory. Prints Markdown, then frame_instructions=N and
# frame_cycles=C (for the demo's report).
# Usage: scripts/m33_frame_cost.sh [cost|memory|all]   (default all)
set -eu
cd "$(dirname "$0")/.."
what="${1:-all}"
elf=build/m33/examples/qel_m33_frame_cost
{ cmake --preset m33 && cmake --build --preset m33 --target qel_m33_frame_cost; } >/dev/null
counts=$(QEL_QEMU_EXTRA="-icount shift=0" ./cmake/qemu-m33.sh "$elf")

if [ "$what" != memory ]; then
  echo "### One qel-denoise frame on the Cortex-M33 (768 samples at 48 kHz = 16 ms)"
  echo
  echo "| stage | instructions | share |"
  echo "|---|---:|---:|"
  echo "$counts" | awk -F'\t' '
    $1 == "stage" { name[++n] = $2; ins[n] = $3; total += $3 }
    function commas(v,  s, r) {
      s = sprintf("%d", v)
      for (r = ""; length(s) > 3; s = substr(s, 1, length(s) - 3)) r = "," substr(s, length(s) - 2) r
      return s r
    }
    END {
      for (i = 1; i <= n; ++i) printf "| %s | %s | %.0f %% |\n", name[i], commas(ins[i]), 100 * ins[i] / total
      printf "| **whole frame** | **%s** | 100 %% |\n", commas(total)
    }'
  echo
  echo "Instructions counted under QEMU (-icount shift=0, SysTick; bench/m33/counter.h) after 16"
  echo "warm-up frames of a pulsed voice in noise; cycles not estimated."
  echo
fi
if [ "$what" != cost ]; then
  echo "### qel-denoise frame memory on the Cortex-M33"
  echo
  echo "| what | bytes | in |"
  echo "|---|---:|---|"
  echo "$counts" | awk -F'\t' '$1 == "memory" { printf "| %s | %d | RAM |\n", $2, $3 }'
  arm-none-eabi-nm -S -C -t d "$elf" | awk '
    / denoise::\(anonymous namespace\)::k(Tw|SplitTw|Rev)$/ { tables += $2 }
    END { printf "| FFT tables (twiddles, digit reversal; constants) | %d | flash |\n", tables }'
  arm-none-eabi-size build/m33/examples/libqel_denoise_pipeline.a | awk 'NR > 1 { text += $1 }
    END { printf "| frame code outside the library (pipeline.cpp, fft.cpp; .text) | %d | flash |\n", text }'
  echo
  n=$(arm-none-eabi-objdump -dr build/m33/examples/libqel_denoise_pipeline.a |
    grep -cE '__aeabi_d|\.f64|\b(sin|cos|exp|log|pow)f?\b' || true)
  echo "Double-precision operations or C library sines in that code: $n (float only, own sines)."
  echo
fi
[ "$what" = memory ] || echo "$counts" | grep '^frame_instructions='

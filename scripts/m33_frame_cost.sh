#!/bin/sh
# One whole qel-denoise frame on the Cortex-M33 (QEMU mps2-an505): instructions
# and estimated cycles per stage, the FFT included, the load at 150 MHz, and
# the frame's memory. Prints Markdown; the cost ends with the lines
# frame_instructions=N and frame_cycles=C (for the demo's report).
# Usage: scripts/m33_frame_cost.sh [cost|memory|all]   (default all)
set -eu
cd "$(dirname "$0")/.."
what="${1:-all}"
elf=build/m33/examples/qel_m33_frame_cost
{ cmake --preset m33 && cmake --build --preset m33 --target qel_m33_frame_cost; } >/dev/null
if [ "$what" = memory ]; then
  out=$(./cmake/qemu-m33.sh "$elf")
else
  # The program under QEMU's instruction trace: m33_cycles.py prices each
  # marked stage and appends "region <n> instructions <i> cycles <c>" lines.
  out=$(python3 bench/m33/m33_cycles.py --run "$elf")
fi

if [ "$what" != memory ]; then
  cost=$(echo "$out" | awk -F'\t' '
    function commas(v,  s, r) {
      s = sprintf("%d", v)
      for (r = ""; length(s) > 3; s = substr(s, 1, length(s) - 3)) r = "," substr(s, length(s) - 2) r
      return s r
    }
    $1 == "stage" { name[++n] = $2 }
    /^region / { split($0, f, " "); ++m; ins[m] = f[4]; cyc[m] = f[6]; ti += f[4]; tc += f[6] }
    END {
      if (n == 0 || m != n) { print "stages and priced regions differ"; exit 1 }
      print "| stage | instructions | estimated cycles | share of the cycles |"
      print "|---|---:|---:|---:|"
      for (i = 1; i <= n; ++i)
        printf "| %s | %s | %s | %.0f %% |\n", name[i], commas(ins[i]), commas(cyc[i]), 100 * cyc[i] / tc
      printf "| **whole frame** | **%s** | **%s** | 100 %% |\n\n", commas(ti), commas(tc)
      printf "Load at 150 MHz: %s estimated cycles of the 2,400,000 in 16 ms = **%.1f %%**.\n", commas(tc), 100 * tc / 2400000
      printf "frame_instructions=%d\nframe_cycles=%d\n", ti, tc
    }') || { echo "m33_frame_cost.sh: $cost" >&2; exit 1; }
  echo "### One qel-denoise frame on the Cortex-M33 (768 samples at 48 kHz = 16 ms)"
  echo
  echo "$cost" | grep -v '^frame_'
  echo
  echo "One frame after 16 warm-up frames of a pulsed voice in noise, traced under QEMU and priced"
  echo "by bench/m33/m33_cycles.py: an estimate from the nearest published timing (zero wait states,"
  echo "no bus contention), with the library's multiply-accumulate form as built (QEL_MAC)."
  echo
fi
if [ "$what" != cost ]; then
  echo "### qel-denoise frame memory on the Cortex-M33"
  echo
  echo "| what | bytes | in |"
  echo "|---|---:|---|"
  echo "$out" | awk -F'\t' '$1 == "memory" { printf "| %s | %d | RAM |\n", $2, $3 }'
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
[ "$what" = memory ] || echo "$cost" | grep '^frame_'

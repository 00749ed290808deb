#!/bin/sh
# Size and stack report of the M33 library: .text/.data/.bss at -O2 and -Os,
# the deepest stack frame of any exported function (-fstack-usage), and the
# library check (no mutable data, no double-precision code), and the memory of
# one qel-denoise frame (scripts/m33_frame_cost.sh). Prints Markdown.
set -eu
cd "$(dirname "$0")/.."
./scripts/setup.sh >/dev/null
for opt in O2 Os; do
  dir="build/m33-size-$opt"
  cmake -S . -B "$dir" -G Ninja --toolchain cmake/arm-none-eabi-m33.cmake \
    -DCMAKE_BUILD_TYPE=Release "-DCMAKE_CXX_FLAGS_RELEASE=-$opt -fstack-usage" \
    -DQEL_BUILD_TESTS=OFF -DQEL_BUILD_BENCH=OFF -DQEL_BUILD_EXAMPLES=OFF -DQEL_INSTALL=OFF >/dev/null 2>&1
  cmake --build "$dir" --target qel >/dev/null
done

echo "### M33 library size (arm-none-eabi-gcc 12, -mcpu=cortex-m33 -mfpu=fpv5-sp-d16 -mfloat-abi=hard)"
echo
echo "| build | .text | .data | .bss |"
echo "|---|---:|---:|---:|"
for opt in O2 Os; do
  arm-none-eabi-size -t "build/m33-size-$opt/dsp/sdk/libqel.a" | awk -v o="-$opt" '/(TOTALS)/ {printf "| %s | %d | %d | %d |\n", o, $1, $2, $3}'
done
echo
echo "Per object at -Os (text bytes):"
echo
arm-none-eabi-size "build/m33-size-Os/dsp/sdk/libqel.a" | awk 'NR > 1 {sub(/ \(ex.*/, "", $6); printf "- %s: %d\n", $6, $1}'
echo
echo "### Stack (-fstack-usage, -O2)"
echo
echo "Deepest exported functions (bytes of stack frame; static = fixed size):"
echo
find build/m33-size-O2/dsp -name '*.su' -exec cat {} + |
  awk -F'\t' 'match($1, /[ *]qel_[a-z0-9_]+\(/) {
      printf "%d\t%s\t%s\n", $2, substr($1, RSTART + 1, RLENGTH - 2), $3 }' |
  sort -n -r | head -5 | awk -F'\t' '{printf "- %s: %d (%s)\n", $2, $1, $3}'
echo
echo "### Library check"
echo
./cmake/check_library.sh build/m33-size-O2/dsp/sdk/libqel.a arm-none-eabi-nm arm-none-eabi-objdump m33
echo
./scripts/m33_frame_cost.sh memory
echo && ./scripts/line_count.sh

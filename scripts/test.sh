#!/bin/sh
# Sets up the machine, then builds and runs every test: the host suite, the
# same suite cross-built for the Cortex-M33 and run under QEMU, the installed
# package from consumer projects, the Python module's tests, the host suite
# under sanitizers, and lint.
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
  if [ "$preset" = host ]; then
    echo "==== host: Python module against NumPy/SciPy and the plain float32 references"
    [ -x build/host/python/pytest ] || { echo "the Python module was not built (see cmake's 'qel Python bindings' line)"; exit 1; }
    ./build/host/python/pytest -q
  fi
done
echo "==== qel-denoise: the M33 build writes the host's bytes" && ./scripts/check_device_denoise.sh
echo "==== m33 built for size (-Os): the general filter paths"
cmake --preset m33-os >/dev/null
cmake --build --preset m33-os
ctest --preset m33-os
echo "==== m33 with the single-instruction multiply-accumulate (QEL_MAC=vmla): the same results"
cmake --preset m33-vmla >/dev/null
cmake --build --preset m33-vmla
ctest --preset m33-vmla
echo "==== M33 cycle pricer: rules checked on sequences priced by hand"
python3 bench/m33/m33_cycles.py --self-test

echo "==== host with AddressSanitizer and UndefinedBehaviorSanitizer"
cmake --preset host-asan >/dev/null
cmake --build --preset host-asan
ctest --preset host-asan

echo "==== host with every caller promise checked (QEL_CHECKED), incl. death tests"
cmake --preset host-checked >/dev/null
cmake --build --preset host-checked
ctest --preset host-checked
echo "==== Python tests on the checked library: the binding must keep every promise"
./build/host-checked/python/pytest -q

echo "==== short randomized soak (fresh seed; longer runs: scripts/soak.sh <seconds> [seed])"
./scripts/soak.sh 2

echo "==== format and static checks"
./scripts/lint.sh

echo "==== all suites passed (host, Cortex-M33, sanitizers, consumers, lint)"

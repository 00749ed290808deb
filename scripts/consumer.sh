#!/bin/sh
# Installs the given build (host or m33) into build/install-<preset>, then
# configures, builds and runs the C and C++ consumer projects against it, as a
# firmware project would use qel. The host also checks the pkg-config files.
set -eu
cd "$(dirname "$0")/.."
preset="${1:-host}"
root="$PWD"
prefix="$root/build/install-$preset"
rm -rf "$prefix"
cmake --install "build/$preset" --prefix "$prefix" >/dev/null
extra=""
# The cross toolchain searches packages only under its find root: name the
# package directory directly.
[ "$preset" = m33 ] && extra="-DCMAKE_TOOLCHAIN_FILE=$root/cmake/arm-none-eabi-m33.cmake -Dqel_DIR=$prefix/lib/cmake/qel"
for lang in c cpp; do
  bdir="$root/build/consumer-$preset-$lang"
  rm -rf "$bdir"
  # shellcheck disable=SC2086
  cmake -S "tests/consumer/$lang" -B "$bdir" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_PREFIX_PATH="$prefix" $extra >/dev/null
  cmake --build "$bdir" >/dev/null
  if [ "$preset" = m33 ]; then
    ./cmake/qemu-m33.sh "$bdir/consumer_$lang"
  else
    "$bdir/consumer_$lang"
  fi
done
if [ "$preset" = host ]; then
  export PKG_CONFIG_PATH="$prefix/lib/pkgconfig"
  # shellcheck disable=SC2046
  cc -std=c99 -pedantic-errors -Wall -Werror tests/consumer/c/main.c \
    $(pkg-config --cflags --libs qel qel-port-hosted) -o "$root/build/consumer-host-pkgconfig"
  "$root/build/consumer-host-pkgconfig" | sed 's/consumer_c/consumer_c (pkg-config)/'
fi

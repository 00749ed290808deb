#!/bin/sh
# Checks a built libqel.a for what the library promises about itself:
#  - no mutable global or static data (.data/.bss symbols),
#  - only the lifecycle object (containers) calls the allocator,
#  - on the M33, no double-precision instruction or helper call.
# usage: check_library.sh <libqel.a> <nm> <objdump> [m33]
set -u
lib="$1"; nm="$2"; objdump="$3"; target="${4:-host}"
status=0

data=$("$nm" -A "$lib" | grep -E ' [bBdDC] ' | grep -v -E ' [bB] \.bss$')
if [ -n "$data" ]; then
  echo "mutable data in the library:"; echo "$data"; status=1
fi

alloc=$("$nm" -A -u "$lib" | grep -E 'quelta_(calloc|free)$' | grep -v 'containers\.cpp\.o')
if [ -n "$alloc" ]; then
  echo "allocator used outside the lifecycle functions:"; echo "$alloc"; status=1
fi

if [ "$target" = m33 ]; then
  dbl=$("$objdump" -d "$lib" | grep -E '\.f64|__aeabi_(d|f2d|i2d|ui2d|l2d|ul2d)|vcvt\.f64|vcvt\.f32\.f64' | head -20)
  if [ -n "$dbl" ]; then
    echo "double-precision code in the M33 library:"; echo "$dbl"; status=1
  fi
fi

[ "$status" -eq 0 ] && echo "library check passed: no mutable data, allocation only in lifecycle${target:+, target $target}"
exit "$status"

// SPDX-License-Identifier: MIT
// Platform hooks for the Cortex-M33: newlib's heap and stdio (semihosting on
// QEMU), the FPU's own square root.
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "os_support.h"

extern "C" {

void* quelta_calloc(size_t size) { return std::calloc(1, size); }
void quelta_free(void* p) { std::free(p); }

// One VSQRT.F32 (the unit is IEEE-exact); compiled without errno.
qel_float qel_sqrtf(qel_float x) { return __builtin_sqrtf(x); }
qel_float qel_powf(qel_float base, qel_float exponent) { return powf(base, exponent); }

int bk_printf(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int n = std::vprintf(fmt, args);
  va_end(args);
  return n;
}

}  // extern "C"

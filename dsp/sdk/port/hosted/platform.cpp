// SPDX-License-Identifier: MIT
// Platform hooks for Linux and macOS: the C allocator, <cmath>, stdout.
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "os_support.h"

extern "C" {

// calloc(0, ...) may return null or a unique pointer; free accepts both.
void* quelta_calloc(size_t size) { return std::calloc(1, size); }
void quelta_free(void* p) { std::free(p); }

qel_float qel_sqrtf(qel_float x) { return std::sqrt(x); }
qel_float qel_powf(qel_float base, qel_float exponent) { return std::pow(base, exponent); }

int bk_printf(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int n = std::vprintf(fmt, args);
  va_end(args);
  return n;
}

}  // extern "C"

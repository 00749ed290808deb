// SPDX-License-Identifier: MIT
// Console dumps of real, complex and 16-bit vectors and arrays through bk_printf.
#include <bit>
#include <cstdint>

#include "../utils/os_support.h"
#include "vector.h"

namespace {

// The double a %e conversion needs, built from the float's bits: the one
// widening in the library. Every float is exactly a double, so this is
// exact; doing it with integers keeps the M33 (no double hardware) off the
// runtime's double helpers. NaN payloads keep their bits (quiet bit included).
double widen_for_print(qel_float x) {
  const uint32_t u = std::bit_cast<uint32_t>(x);
  const uint64_t sign = static_cast<uint64_t>(u >> 31) << 63;
  const uint32_t exponent = (u >> 23) & 0xffu;
  uint32_t mantissa = u & 0x7fffffu;
  uint64_t d = sign;  // +-0 stays +-0
  if (exponent == 0xffu) {
    d |= (uint64_t{0x7ff} << 52) | (static_cast<uint64_t>(mantissa) << 29);  // inf, NaN
  } else if (exponent != 0) {
    d |= (static_cast<uint64_t>(exponent + (1023u - 127u)) << 52) |
         (static_cast<uint64_t>(mantissa) << 29);
  } else if (mantissa != 0) {
    // A float denormal is a normal double: shift the leading one up to the
    // implicit bit and lower the exponent by as much.
    const int shift = std::countl_zero(mantissa) - 8;
    mantissa <<= shift;
    d |= (static_cast<uint64_t>(1023 - 126 - shift) << 52) |
         (static_cast<uint64_t>(mantissa & 0x7fffffu) << 29);
  }
  return std::bit_cast<double>(d);
}

// One print: the format with its values, then a newline of its own.
template <typename... Values>
void print(const char* format, Values... values) {
  bk_printf(format, values...);
  bk_printf("\n");
}

// The layout shared by every dump: a break (two newlines) before element i
// whenever i % line_num is 0, the element, and a break after the last one.
// print_element(i) makes the element's print.
template <typename PrintElement>
void dump(int n, int line_num, PrintElement print_element) {
  for (int i = 0; i < n; ++i) {
    if (i % line_num == 0) print("\n");
    print_element(i);
  }
  print("\n");
}

void dump_floats(const qel_float* m, int n, int line_num) {
  dump(n, line_num, [&](int i) { print(" %e,", widen_for_print(m[i])); });
}

// The sign goes with the format only when im < 0: -0 and NaN take "+", and
// the conversion then prints their own sign after it.
void dump_complex(const qel_cpx_vec* m, int line_num) {
  dump(m->dim, line_num, [&](int i) {
    const qel_float re = m->re[i];
    const qel_float im = m->im[i];
    print((im < 0.0f) ? "%e%ei, " : "%e+%ei, ", widen_for_print(re), widen_for_print(im));
  });
}

}  // namespace

extern "C" {

// Each dump prints its n values in order, one print (format, then "\n") each,
// with two "\n" before element i when i % line_num == 0 (a negative line_num
// breaks like its magnitude; 0 divides by zero) and two after the last.
// Floats print with " %e,", 16-bit samples with "%d, ", complex values with
// "%e+%ei, " or, when im < 0, "%e%ei, ". The values are only read.
//
// The 2 forms take a scale exponent Q but print the values unscaled, so they
// make exactly the calls of the plain forms whatever Q is. Q is not even
// evaluated: 1 << Q is undefined for Q outside 0..30, and a scale that
// reaches no output would be dead code.

void qel_flt_vec_dump(const qel_flt_vec* m, int line_num) {
  dump_floats(m->data, m->dim, line_num);
}

void qel_flt_vec_dump2(const qel_flt_vec* m, int line_num, int /*Q*/) {
  dump_floats(m->data, m->dim, line_num);
}

void qel_fl_dump(const qel_float* m, int len, int line_num) { dump_floats(m, len, line_num); }

void qel_fl_dump2(const qel_float* m, int len, int line_num, int /*Q*/) {
  dump_floats(m, len, line_num);
}

void qel_short_dump(const short int* m, int len, int line_num) {
  dump(len, line_num, [&](int i) { print("%d, ", static_cast<int>(m[i])); });
}

void qel_cpx_vec_dump(const qel_cpx_vec* m, int line_num) { dump_complex(m, line_num); }

void qel_cpx_vec_dump2(const qel_cpx_vec* m, int line_num, int /*Q*/) { dump_complex(m, line_num); }

}  // extern "C"

// SPDX-License-Identifier: MIT
// Multiply-accumulate with the product rounded before the addition, and the
// formulas built on it.
#pragma once

#include "utils.h"

namespace qel::detail {

// acc + a * b, rounded twice (product, then sum): never fused. On the M33 this
// is one VMLA, whose multiply is rounded before the accumulation, so it gives
// exactly the bits of the separate VMUL and VADD (with acc as the first
// operand of the addition, as in the C expression). GCC does not emit VMLA for
// this core on its own.
[[gnu::always_inline]] inline float mac(float acc, float a, float b) {
#if QEL_ARM_VFP
  __asm("vmla.f32 %0, %1, %2" : "+t"(acc) : "t"(a), "t"(b));
  return acc;
#else
  return acc + a * b;
#endif
}

// acc - a * b, rounded twice; one VMLS on the M33.
[[gnu::always_inline]] inline float msc(float acc, float a, float b) {
#if QEL_ARM_VFP
  __asm("vmls.f32 %0, %1, %2" : "+t"(acc) : "t"(a), "t"(b));
  return acc;
#else
  return acc - a * b;
#endif
}

// The power of a complex element, re*re + im*im in single precision: how the
// library measures and ranks bins. Two instructions on the M33.
[[gnu::always_inline]] inline float cpx_power(float re, float im) { return mac(re * re, im, im); }

}  // namespace qel::detail

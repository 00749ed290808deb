// SPDX-License-Identifier: MIT
// Multiply-accumulate with the product rounded before the addition, and the
// formulas built on it.
#pragma once

#include "utils.h"

// The build chooses the M33's multiply-accumulate form (QEL_MAC=split|vmla):
// QEL_MAC_VMLA set = one VMLA/VMLS per step; unset = VMUL then VADD/VSUB.
// VMLA rounds its product before the accumulation, so both give the same bits.
#if QEL_ARM_VFP && defined(QEL_MAC_VMLA) && QEL_MAC_VMLA
#define QEL_USE_VMLA 1
#else
#define QEL_USE_VMLA 0
#endif

namespace qel::detail {

// a * b, kept a separate VMUL in the split form: GCC would otherwise merge
// some products with their addition into a VMLA (same bits, other cost).
[[gnu::always_inline]] inline float product(float a, float b) {
  float p = a * b;
#if QEL_ARM_VFP && !QEL_USE_VMLA
  __asm("" : "+t"(p));
#endif
  return p;
}

// acc + a * b, rounded twice (product, then sum): never fused. GCC emits VMLA
// for this core only now and then, hence the assembly for that form.
[[gnu::always_inline]] inline float mac(float acc, float a, float b) {
#if QEL_USE_VMLA
  __asm("vmla.f32 %0, %1, %2" : "+t"(acc) : "t"(a), "t"(b));
  return acc;
#else
  return acc + product(a, b);
#endif
}

// acc - a * b, rounded twice.
[[gnu::always_inline]] inline float msc(float acc, float a, float b) {
#if QEL_USE_VMLA
  __asm("vmls.f32 %0, %1, %2" : "+t"(acc) : "t"(a), "t"(b));
  return acc;
#else
  return acc - product(a, b);
#endif
}

// The power of a complex element, re*re + im*im in single precision: how the
// library measures and ranks bins.
[[gnu::always_inline]] inline float cpx_power(float re, float im) { return mac(re * re, im, im); }

}  // namespace qel::detail

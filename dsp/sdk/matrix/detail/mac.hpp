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

// acc + a * b, rounded twice (product, then sum): never fused. The plain
// expression compiles to VMUL + VADD under -ffp-contract=off (GCC may pick
// VMLA on its own now and then: the same bits).
[[gnu::always_inline]] inline float mac(float acc, float a, float b) {
#if QEL_USE_VMLA
  __asm("vmla.f32 %0, %1, %2" : "+t"(acc) : "t"(a), "t"(b));
  return acc;
#else
  return acc + a * b;
#endif
}

// acc - a * b, rounded twice.
[[gnu::always_inline]] inline float msc(float acc, float a, float b) {
#if QEL_USE_VMLA
  __asm("vmls.f32 %0, %1, %2" : "+t"(acc) : "t"(a), "t"(b));
  return acc;
#else
  return acc - a * b;
#endif
}

// acc += a * b as above, at this point of the instruction stream: the step
// stays where the source puts it (no reordering among such steps), so a loop
// can keep its loads together. For the inner loops whose schedule matters.
[[gnu::always_inline]] inline void mac_here(float& acc, float a, float b) {
#if QEL_USE_VMLA
  __asm volatile("vmla.f32 %0, %1, %2" : "+t"(acc) : "t"(a), "t"(b));
#elif QEL_ARM_VFP
  float p;
  __asm volatile("vmul.f32 %1, %2, %3\n\tvadd.f32 %0, %0, %1"
                 : "+t"(acc), "=&t"(p)
                 : "t"(a), "t"(b));
#else
  acc = acc + a * b;
#endif
}

// The power of a complex element, re*re + im*im in single precision: how the
// library measures and ranks bins.
[[gnu::always_inline]] inline float cpx_power(float re, float im) { return mac(re * re, im, im); }

}  // namespace qel::detail

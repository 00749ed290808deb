/* SPDX-License-Identifier: MIT */
/* Small helpers shared inside the library; not part of the exported interface. */
#ifndef QEL_UTILS_H
#define QEL_UTILS_H

#include "os_support.h"
#include "qel_types.h"

/* Single-precision VFP with the fixed-point VCVT forms (Armv8-M Mainline FPU). */
#if defined(__ARM_FP) && (__ARM_FP & 4) && defined(__thumb2__)
#define QEL_ARM_VFP 1
#else
#define QEL_ARM_VFP 0
#endif

/* Saturates to -32768..32767, then truncates toward zero; NaN gives 0. */
static inline int16 float_to_int16(float value) {
#if QEL_ARM_VFP
  /* VCVT to 16-bit fixed point saturates, rounds toward zero and turns NaN
     into 0: the whole rule in one instruction. */
  int32 r;
  __asm("vcvt.s16.f32 %1, %1, #0\n\tvmov %0, %1" : "=r"(r), "+t"(value));
  return (int16)r;
#else
  /* Range checks come first: converting an out-of-range float is undefined
     and the machines disagree on what it gives. */
  if (value > 32767.0f) return 32767;
  if (value < -32768.0f) return -32768;
  if (value != value) return 0;
  return (int16)value;
#endif
}

#endif /* QEL_UTILS_H */

/* SPDX-License-Identifier: MIT */
/* Small helpers shared inside the library; not part of the exported interface. */
#ifndef QEL_UTILS_H
#define QEL_UTILS_H

#include "os_support.h"
#include "qel_types.h"

/* Saturates to -32768..32767, then truncates toward zero; NaN gives 0.
   Range checks come first: converting an out-of-range float is undefined
   and the M33 and x86-64 disagree on what it gives. */
static inline int16 float_to_int16(float value) {
  if (value > 32767.0f) return 32767;
  if (value < -32768.0f) return -32768;
  if (value != value) return 0;
  return (int16)value;
}

#endif /* QEL_UTILS_H */

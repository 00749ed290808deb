/* SPDX-License-Identifier: MIT */
/* The float type and the platform hooks the library needs. Only declarations
   live here: a port (dsp/sdk/port/...) or the firmware itself supplies them. */
#ifndef QEL_OS_SUPPORT_H
#define QEL_OS_SUPPORT_H

#include <stddef.h>

typedef float qel_float; /* IEEE 754 single precision, the only arithmetic type */

#ifdef __cplusplus
extern "C" {
#endif

/* Returns a block of at least `size` bytes, ALL ZERO. The library relies on the
   zeroing (new vectors read as 0.0) and never tests the result. A request of
   0 bytes must succeed, and its result must be accepted by quelta_free. */
void* quelta_calloc(size_t size);
/* Releases a block from quelta_calloc. */
void quelta_free(void* p);

/* Single-precision square root and power function. */
qel_float qel_sqrtf(qel_float x);
qel_float qel_powf(qel_float base, qel_float exponent);

/* printf-style console print. The dumps use it only with the conversions
   %e (double) and %d (int); the result is not used. */
int bk_printf(const char* fmt, ...);

#ifdef __cplusplus
}
#endif

#endif /* QEL_OS_SUPPORT_H */

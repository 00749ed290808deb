/* SPDX-License-Identifier: MIT */
/* Fixed-width integer names used by the qel interface: PCM samples and counts. */
#ifndef QEL_TYPES_H
#define QEL_TYPES_H

#include <stdint.h>

typedef int16_t int16; /* 16-bit PCM sample */
typedef int32_t int32; /* 24-bit PCM sample, sign-extended to 32 bits */

#endif /* QEL_TYPES_H */

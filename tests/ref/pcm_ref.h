// SPDX-License-Identifier: MIT
// Plain references for PCM conversion: one obvious loop per function.
#pragma once

#include "vector.h"

namespace qel::ref {

int16_t to_int16(float value);
int32_t to_int24(float value);
void normalize(const int16_t* in, float* out, int len);
void denormalize(const float* in, int16_t* out, int len);
void normalize24(const int32_t* in, float* out, int len);
void denormalize24(const float* in, int32_t* out, int len);

}  // namespace qel::ref

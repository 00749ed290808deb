// SPDX-License-Identifier: MIT
// Plain references for PCM conversion: one obvious loop per function.
#pragma once

#include "vector.h"

namespace qel::ref {

int16_t to_int16(float value);
int32_t to_int24(float value);
void vec_normalize(const int16_t* in, float* out, int len);
void vec_denormalize(const float* in, int16_t* out, int len);
void vec_normalize24(const int32_t* in, float* out, int len);
void vec_denormalize24(const float* in, int32_t* out, int len);
inline constexpr auto denormalize = vec_denormalize;  // the benchmarks' name

}  // namespace qel::ref

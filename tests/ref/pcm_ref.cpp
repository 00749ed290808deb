// SPDX-License-Identifier: MIT
#include "ref/pcm_ref.h"

namespace qel::ref {

// Saturate at the bounds, NaN to 0, otherwise drop the fraction.
int16_t to_int16(float value) {
  if (value > 32767.0f) return 32767;
  if (value < -32768.0f) return -32768;
  if (value != value) return 0;
  return static_cast<int16_t>(value);
}

int32_t to_int24(float value) {
  if (value > 8388607.0f) return 8388607;
  if (value < -8388608.0f) return -8388608;
  if (value != value) return 0;
  return static_cast<int32_t>(value);
}

void vec_normalize(const int16_t* in, float* out, int len) {
  for (int k = 0; k < len; ++k) out[k] = static_cast<float>(in[k]) / 32768.0f;
}

void vec_denormalize(const float* in, int16_t* out, int len) {
  for (int k = 0; k < len; ++k) out[k] = to_int16(in[k] * 32768.0f);
}

void vec_normalize24(const int32_t* in, float* out, int len) {
  for (int k = 0; k < len; ++k) out[k] = static_cast<float>(in[k]) / 8388608.0f;
}

void vec_denormalize24(const float* in, int32_t* out, int len) {
  for (int k = 0; k < len; ++k) out[k] = to_int24(in[k] * 8388608.0f);
}

}  // namespace qel::ref

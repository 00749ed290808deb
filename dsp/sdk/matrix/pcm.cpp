// SPDX-License-Identifier: MIT
// PCM conversion: 16- and 24-bit integer samples to and from normalised floats.
#include <cstring>

#include "../utils/utils.h"
#include "vector.h"

namespace {

constexpr qel_float kQ15 = 1.0f / 32768.0f;    // 2^-15, exact
constexpr qel_float kQ23 = 1.0f / 8388608.0f;  // 2^-23, exact

// Saturates to -8388608..8388607, truncates toward zero; NaN gives 0.
int32 float_to_int24(qel_float value) {
  if (value > 8388607.0f) return 8388607;
  if (value < -8388608.0f) return -8388608;
  if (value != value) return 0;
  return static_cast<int32>(value);
}

// The output may be the input's own memory under another type. A store through
// memcpy is a char-typed access, which may alias anything, so the in-place
// forms stay defined; it compiles to one plain store.
template <typename T>
void store(T* p, T v) {
  std::memcpy(p, &v, sizeof v);
}

}  // namespace

extern "C" {

// Groups of four: a group's samples are all read before any of its floats is
// written. That is what lets the samples sit in the upper half of `out`.
void qel_vec_normalize(const int16* in, qel_float* out, int len) {
  int k = 0;
  for (; k + 4 <= len; k += 4) {
    const int16 s0 = in[k], s1 = in[k + 1], s2 = in[k + 2], s3 = in[k + 3];
    store(out + k, static_cast<qel_float>(s0) * kQ15);
    store(out + k + 1, static_cast<qel_float>(s1) * kQ15);
    store(out + k + 2, static_cast<qel_float>(s2) * kQ15);
    store(out + k + 3, static_cast<qel_float>(s3) * kQ15);
  }
  for (; k < len; ++k) store(out + k, static_cast<qel_float>(in[k]) * kQ15);
}

// Element k is read before it is written, walking forward: out may alias in.
void qel_vec_denormalize(const qel_float* in, int16* out, int len) {
  for (int k = 0; k < len; ++k) {
    const qel_float v = in[k];
    store(out + k, float_to_int16(v * 32768.0f));
  }
}

void qel_vec_normalize24(const int32* in, qel_float* out, int len) {
  for (int k = 0; k < len; ++k) {
    const int32 s = in[k];
    store(out + k, static_cast<qel_float>(s) * kQ23);
  }
}

void qel_vec_denormalize24(const qel_float* in, int32* out, int len) {
  for (int k = 0; k < len; ++k) {
    const qel_float v = in[k];
    store(out + k, float_to_int24(v * 8388608.0f));
  }
}

}  // extern "C"

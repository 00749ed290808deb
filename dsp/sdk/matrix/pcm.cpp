// SPDX-License-Identifier: MIT
// PCM conversion: 16- and 24-bit integer samples to and from normalised floats.
//
// Each conversion is one scaling by a power of two, exact within the ranges, and
// the float-to-integer ones saturate before they truncate. On the M33 the FPU's
// fixed-point VCVT does scaling, saturation (16-bit), truncation and NaN-to-0 in
// one instruction; elsewhere the portable code below spells the same rule out.
#include "../utils/utils.h"
#include "detail/contract.hpp"
#include "detail/loops.hpp"
#include "vector.h"

namespace {

constexpr qel_float kQ15 = 1.0f / 32768.0f;    // 2^-15, exact
constexpr qel_float kQ23 = 1.0f / 8388608.0f;  // 2^-23, exact

// The output may be the input's own memory under another type. Stores go
// through may_alias types, which may alias anything, so the in-place forms
// stay defined and still compile to one plain store (VSTR for floats).
typedef qel_float __attribute__((may_alias)) float_alias;
typedef int16 __attribute__((may_alias)) int16_alias;
typedef int32 __attribute__((may_alias)) int32_alias;
void store(qel_float* p, qel_float v) { *reinterpret_cast<float_alias*>(p) = v; }
void store(int16* p, int16 v) { *reinterpret_cast<int16_alias*>(p) = v; }
void store(int32* p, int32 v) { *reinterpret_cast<int32_alias*>(p) = v; }

// sample * 2^-15.
qel_float from_q15(int16 s) {
#if QEL_ARM_VFP
  qel_float f;
  const int32 wide = s;
  __asm("vmov %0, %1\n\tvcvt.f32.s16 %0, %0, #15" : "=t"(f) : "r"(wide));
  return f;
#else
  return static_cast<qel_float>(s) * kQ15;
#endif
}

// float_to_int16(v * 32768): the product is exact, so converting straight to
// 15 fraction bits gives the same truncation and saturation.
int16 to_q15(qel_float v) {
#if QEL_ARM_VFP
  int32 r;
  __asm("vcvt.s16.f32 %1, %1, #15\n\tvmov %0, %1" : "=r"(r), "+t"(v));
  return static_cast<int16>(r);
#else
  return float_to_int16(v * 32768.0f);
#endif
}

// sample * 2^-23, rounded to nearest beyond 24 bits like an int-to-float cast.
qel_float from_q23(int32 s) {
#if QEL_ARM_VFP
  qel_float f;
  __asm("vmov %0, %1\n\tvcvt.f32.s32 %0, %0, #23" : "=t"(f) : "r"(s));
  return f;
#else
  return static_cast<qel_float>(s) * kQ23;
#endif
}

// Saturates v * 8388608 to -8388608..8388607, truncates toward zero; NaN gives 0.
int32 to_q23(qel_float v) {
#if QEL_ARM_VFP
  // VCVT saturates at the 32-bit range only; SSAT narrows that to 24 bits.
  int32 r;
  __asm("vcvt.s32.f32 %1, %1, #23\n\tvmov %0, %1\n\tssat %0, #24, %0" : "=r"(r), "+t"(v));
  return r;
#else
  const qel_float x = v * 8388608.0f;
  if (x > 8388607.0f) return 8388607;
  if (x < -8388608.0f) return -8388608;
  if (x != x) return 0;
  return static_cast<int32>(x);
#endif
}

}  // namespace

extern "C" {

// Groups of four: a group's samples are all read before any of its floats is
// written. That is what lets the samples sit in the upper half of `out`.
void qel_vec_normalize(const int16* in, qel_float* out, int len) {
  QEL_EXPECT(len >= 0, "len >= 0");
  QEL_EXPECT(len == 0 || (in != nullptr && out != nullptr), "in and out are not null");
  QEL_EXPECT(qel::detail::disjoint(in, sizeof(int16) * static_cast<size_t>(len), out,
                                   qel::detail::float_bytes(len)) ||
                 reinterpret_cast<const char*>(in) >= reinterpret_cast<const char*>(out) + 2 * len,
             "in does not overlap out, or lies in its upper half");
  int k = 0;
  for (; k + 4 <= len; k += 4) {
    const int16 s0 = in[k], s1 = in[k + 1], s2 = in[k + 2], s3 = in[k + 3];
    store(out + k, from_q15(s0));
    store(out + k + 1, from_q15(s1));
    store(out + k + 2, from_q15(s2));
    store(out + k + 3, from_q15(s3));
  }
  for (; k < len; ++k) store(out + k, from_q15(in[k]));
}

// Element k is read before it is written, walking forward, so out may alias
// in. The stores may alias the input, which keeps the compiler from moving a
// later read above an earlier write even inside an unrolled group.
void qel_vec_denormalize(const qel_float* in, int16* out, int len) {
  QEL_EXPECT(len >= 0, "len >= 0");
  QEL_EXPECT(len == 0 || (in != nullptr && out != nullptr), "in and out are not null");
  QEL_EXPECT(qel::detail::same_or_disjoint(in, qel::detail::float_bytes(len), out,
                                           sizeof(int16) * static_cast<size_t>(len)),
             "out is in itself or does not overlap it");
  qel::detail::for_each_grouped<4>(len, [&](int k) { store(out + k, to_q15(in[k])); });
}

void qel_vec_normalize24(const int32* in, qel_float* out, int len) {
  QEL_EXPECT(len >= 0, "len >= 0");
  QEL_EXPECT(len == 0 || (in != nullptr && out != nullptr), "in and out are not null");
  QEL_EXPECT(qel::detail::same_or_disjoint(in, sizeof(int32) * static_cast<size_t>(len), out,
                                           qel::detail::float_bytes(len)),
             "out is in itself or does not overlap it");
  qel::detail::for_each_grouped<4>(len, [&](int k) { store(out + k, from_q23(in[k])); });
}

void qel_vec_denormalize24(const qel_float* in, int32* out, int len) {
  QEL_EXPECT(len >= 0, "len >= 0");
  QEL_EXPECT(len == 0 || (in != nullptr && out != nullptr), "in and out are not null");
  QEL_EXPECT(qel::detail::same_or_disjoint(in, qel::detail::float_bytes(len), out,
                                           sizeof(int32) * static_cast<size_t>(len)),
             "out is in itself or does not overlap it");
  qel::detail::for_each_grouped<4>(len, [&](int k) { store(out + k, to_q23(in[k])); });
}

}  // extern "C"

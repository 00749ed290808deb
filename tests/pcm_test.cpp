// SPDX-License-Identifier: MIT
// PCM conversion: the worked values at the edges of every range, and round
// trips that lose nothing.
#include <gtest/gtest.h>

#include <vector>

#include "support/values.h"
#include "utils.h"
#include "vector.h"

namespace qel::test {
namespace {

int to16(float x) { return float_to_int16(x); }
int denorm(float x) {
  int16_t s;
  qel_vec_denormalize(&x, &s, 1);
  return s;
}
int denorm24(float x) {
  int32_t s;
  qel_vec_denormalize24(&x, &s, 1);
  return s;
}

struct ToIntCase {
  int (*fn)(float);
  float x;
  int want;
};
// clang-format off
const ToIntCase kToInt[] = {
    {to16, 40000.0f, 32767},      {to16, 32767.9f, 32767},     {to16, -32768.9f, -32768},
    {to16, -40000.0f, -32768},    {to16, 0.9f, 0},             {to16, -0.9f, 0},
    {to16, 2.9f, 2},              {to16, -2.9f, -2},           {to16, kNaN, 0},
    {to16, kInf, 32767},          {to16, -kInf, -32768},       {to16, 1e10f, 32767},
    {denorm, 1.0f, 32767},        {denorm, -1.0f, -32768},     {denorm, 0.5f, 16384},
    {denorm, 1.5f, 32767},        {denorm, 3.0e-05f, 0},       {denorm, -3.0e-05f, 0},
    {denorm, -4.5e-05f, -1},      {denorm, kNaN, 0},           {denorm24, 1.0f, 8388607},
    {denorm24, -1.0f, -8388608},  {denorm24, 0.99999994f, 8388607},  {denorm24, -2.5e-7f, -2},
    {denorm24, kNaN, 0},          {denorm24, -kInf, -8388608},
};
// clang-format on

TEST(Pcm, SaturatesThenTruncates) {
  for (const ToIntCase& c : kToInt) EXPECT_EQ(c.fn(c.x), c.want) << describe(c.x);
}

TEST(Pcm, NormalizeIsExactNeitherMaskedNorClamped) {
  const int16_t in16[3] = {-32768, 32767, 1};
  const int32_t in24[4] = {8388607, -8388608, 16777216, 0x7fffffff};
  float out16[3], out24[4];
  qel_vec_normalize(in16, out16, 3);
  qel_vec_normalize24(in24, out24, 4);
  const float want16[3] = {-1.0f, 0.999969482421875f, 3.0517578125e-05f};
  const float want24[4] = {0.99999988079071044921875f, -1.0f, 2.0f, 256.0f};  // 2^31 - 1 rounds
  expect_same_values(want16, out16, 3, "16-bit");
  expect_same_values(want24, out24, 4, "24-bit");
}

TEST(Pcm, RoundTripsAreLossless) {
  std::vector<int16_t> s16, back16(3000);
  std::vector<int32_t> s24, back24(3000);
  for (int k = 0; k < 3000; ++k) {
    s16.push_back(static_cast<int16_t>(k * 22 - 32768));  // -32768 .. 32210
    s24.push_back(k * 5593 - 8388608);                    // -8388608 .. 8382271
  }
  s16.back() = 32767;
  s24.back() = 8388607;
  std::vector<float> f(3000);
  qel_vec_normalize(s16.data(), f.data(), 3000);
  qel_vec_denormalize(f.data(), back16.data(), 3000);
  qel_vec_normalize24(s24.data(), f.data(), 3000);
  qel_vec_denormalize24(f.data(), back24.data(), 3000);
  EXPECT_EQ(back16, s16);
  EXPECT_EQ(back24, s24);
}

}  // namespace
}  // namespace qel::test

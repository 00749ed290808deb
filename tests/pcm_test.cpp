// SPDX-License-Identifier: MIT
// PCM conversion: hand-worked values at the edges of every range.
#include <gtest/gtest.h>

#include <vector>

#include "support/values.h"
#include "utils.h"
#include "vector.h"

namespace qel::test {
namespace {

struct ToInt16Case {
  float value;
  int16_t want;
  const char* why;
};
constexpr ToInt16Case kToInt16Cases[] = {
    {40000.0f, 32767, "above the range saturates"},
    {32767.9f, 32767, "just below 32768 truncates to the top"},
    {32767.0f, 32767, "the top itself"},
    {-32768.0f, -32768, "the bottom itself"},
    {-32768.9f, -32768, "just below the bottom saturates"},
    {-40000.0f, -32768, "far below saturates"},
    {2.9f, 2, "truncates, never rounds"},
    {-2.9f, -2, "truncates toward zero for negatives"},
    {0.9f, 0, "positive fraction"},
    {-0.9f, 0, "negative fraction"},
    {-0.0f, 0, "negative zero"},
    {kNaN, 0, "NaN gives 0"},
    {-kNaN, 0, "negative NaN gives 0"},
    {kInf, 32767, "+inf saturates"},
    {-kInf, -32768, "-inf saturates"},
    {1e10f, 32767, "far out of int32 range"},
};

TEST(Pcm, FloatToInt16SaturatesThenTruncates) {
  for (const ToInt16Case& c : kToInt16Cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(float_to_int16(c.value), c.want);
  }
}

TEST(Pcm, NormalizeIsExactAndCoversTheTail) {
  const std::vector<int16_t> in = {-32768, 32767, 1, -1, 0, 16384, -16384};
  const std::vector<float> want = {
      -1.0f, 0.999969482421875f, 3.0517578125e-05f, -3.0517578125e-05f, 0.0f, 0.5f, -0.5f};
  for (int len : {0, 1, 2, 3, 4, 5, 7}) {
    SCOPED_TRACE(len);
    Canary<float> out(len);
    qel_vec_normalize(in.data(), out.data(), len);
    expect_same_values(want.data(), out.data(), len);
    EXPECT_TRUE(out.intact());
  }
}

struct DenormCase {
  float value;
  int16_t want;
  const char* why;
};
constexpr DenormCase kDenormCases[] = {
    {1.0f, 32767, "full scale saturates to 32767, not 32768"},
    {-1.0f, -32768, "negative full scale is exact"},
    {0.5f, 16384, "half scale"},
    {1.5f, 32767, "beyond full scale"},
    {0.99999994f, 32767, "largest float below 1"},
    {3.0e-05f, 0, "just under one LSB truncates to 0"},
    {-3.0e-05f, 0, "just under one negative LSB truncates to 0"},
    {3.0517578125e-05f, 1, "one LSB"},
    {-4.5e-05f, -1, "-1.47 LSB truncates to -1"},
    {kNaN, 0, "NaN gives 0"},
    {kInf, 32767, "+inf"},
    {-kInf, -32768, "-inf"},
};

TEST(Pcm, DenormalizeSaturatesAndTruncates) {
  std::vector<float> in;
  for (const DenormCase& c : kDenormCases) in.push_back(c.value);
  const int n = static_cast<int>(in.size());
  Canary<int16_t> out(n);
  qel_vec_denormalize(in.data(), out.data(), n);
  for (int k = 0; k < n; ++k) {
    SCOPED_TRACE(kDenormCases[k].why);
    EXPECT_EQ(out[k], kDenormCases[k].want);
  }
  EXPECT_TRUE(out.intact());
}

struct Denorm24Case {
  float value;
  int32_t want;
  const char* why;
};
constexpr Denorm24Case kDenorm24Cases[] = {
    {1.0f, 8388607, "full scale saturates"},
    {-1.0f, -8388608, "negative full scale is exact"},
    {0.99999994f, 8388607, "largest float below 1"},
    {0.5f, 4194304, "half scale"},
    {-1.0e-7f, 0, "under one LSB truncates to 0"},
    {-2.5e-7f, -2, "-2.1 LSB truncates to -2"},
    {kNaN, 0, "NaN gives 0"},
    {kInf, 8388607, "+inf"},
    {-kInf, -8388608, "-inf"},
    {3.0f, 8388607, "beyond full scale"},
};

TEST(Pcm, Denormalize24SaturatesAndTruncates) {
  for (const Denorm24Case& c : kDenorm24Cases) {
    SCOPED_TRACE(c.why);
    Canary<int32_t> out(1);
    qel_vec_denormalize24(&c.value, out.data(), 1);
    EXPECT_EQ(out[0], c.want);
    EXPECT_TRUE(out.intact());
  }
}

TEST(Pcm, Normalize24NeitherMasksNorClamps) {
  const int32_t in[5] = {8388607, -8388608, 16777216, -1, 0x7fffffff};
  const float want[5] = {0.99999988079071044921875f, -1.0f, 2.0f, -1.1920928955078125e-07f,
                         256.0f};  // 2^31 - 1 rounds to 2^31 as a float
  Canary<float> out(5);
  qel_vec_normalize24(in, out.data(), 5);
  expect_same_values(want, out.data(), 5);
  EXPECT_TRUE(out.intact());
}

TEST(Pcm, RoundTrips16And24AreLossless) {
  std::vector<int16_t> s16;
  for (int v = -32768; v <= 32767; v += 7) s16.push_back(static_cast<int16_t>(v));
  s16.push_back(32767);
  const int n = static_cast<int>(s16.size());
  std::vector<float> f(static_cast<size_t>(n));
  std::vector<int16_t> back(static_cast<size_t>(n));
  qel_vec_normalize(s16.data(), f.data(), n);
  qel_vec_denormalize(f.data(), back.data(), n);
  EXPECT_EQ(back, s16);

  std::vector<int32_t> s24;
  for (int v = -8388608; v < 8388607; v += 4093) s24.push_back(v);
  s24.push_back(8388607);
  const int m = static_cast<int>(s24.size());
  std::vector<float> g(static_cast<size_t>(m));
  std::vector<int32_t> back24(static_cast<size_t>(m));
  qel_vec_normalize24(s24.data(), g.data(), m);
  qel_vec_denormalize24(g.data(), back24.data(), m);
  EXPECT_EQ(back24, s24);
}

TEST(Pcm, DenormalizeInPlacePacksSamplesIntoFirstHalf) {
  const float values[6] = {0.5f, -1.0f, 1.0f, 0.25f, -0.5f, 3.0517578125e-05f};
  const int16_t want[6] = {16384, -32768, 32767, 8192, -16384, 1};
  float buf[6];
  std::copy(values, values + 6, buf);
  qel_vec_denormalize(buf, reinterpret_cast<int16_t*>(buf), 6);
  int16_t got[6];
  std::memcpy(got, buf, sizeof got);
  for (int k = 0; k < 6; ++k) EXPECT_EQ(got[k], want[k]) << k;
}

TEST(Pcm, NormalizeFromUpperHalfOfOutputMatchesSeparateBuffers) {
  for (int len : {1, 3, 4, 5, 8, 11}) {
    SCOPED_TRACE(len);
    std::vector<int16_t> samples;
    for (int k = 0; k < len; ++k) samples.push_back(static_cast<int16_t>(k * 4099 - 20000));
    std::vector<float> want(static_cast<size_t>(len));
    qel_vec_normalize(samples.data(), want.data(), len);

    std::vector<float> buf(static_cast<size_t>(len));
    // The samples occupy bytes 2*len .. 4*len of the float buffer.
    auto* upper = reinterpret_cast<unsigned char*>(buf.data()) + 2 * len;
    std::memcpy(upper, samples.data(), samples.size() * sizeof(int16_t));
    qel_vec_normalize(reinterpret_cast<const int16_t*>(upper), buf.data(), len);
    expect_same_values(want.data(), buf.data(), len);
  }
}

TEST(Pcm, In24PlaceConversionsWalkForward) {
  float buf[4] = {0.5f, -1.0f, 2.0f, -0.25f};
  qel_vec_denormalize24(buf, reinterpret_cast<int32_t*>(buf), 4);
  int32_t got[4];
  std::memcpy(got, buf, sizeof got);
  const int32_t want[4] = {4194304, -8388608, 8388607, -2097152};
  for (int k = 0; k < 4; ++k) EXPECT_EQ(got[k], want[k]);
  qel_vec_normalize24(reinterpret_cast<const int32_t*>(buf), buf, 4);
  const float back[4] = {0.5f, -1.0f, 0.99999988079071044921875f, -0.25f};
  expect_same_values(back, buf, 4);
}

}  // namespace
}  // namespace qel::test

// SPDX-License-Identifier: MIT
// FIR filters: hand-worked cases for the state convention, the rate changes
// and the 16-bit forms.
#include <gtest/gtest.h>

#include <vector>

#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

// Coefficients 1, 10, 100, ...: every output below is a decimal number whose
// digits show which sample met which coefficient, and is exact in float.
const float kDecimal[] = {1.0f, 10.0f, 100.0f, 1000.0f, 10000.0f};

void expect_floats(const std::vector<float>& want, const float* got) {
  expect_same_values(want.data(), got, static_cast<int>(want.size()));
}

TEST(Fir, ImpulseComesOutTimeReversed) {
  const float coeffs[] = {1.0f, 2.0f, 3.0f, 4.0f, 5.0f};
  const float impulse[] = {1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f};
  {
    SCOPED_TRACE("block filter: the coefficients in reverse order, then zeros");
    Canary<float> state(4 + 7, 0.0f), out(7);
    qel_flt_fir(impulse, out.data(), state.data(), coeffs, 5, 7);
    expect_floats({5, 4, 3, 2, 1, 0, 0}, out.data());
    EXPECT_TRUE(out.intact() && state.intact());
  }
  {
    SCOPED_TRACE("decimator M 2: every other coefficient, pCoeffs[4 - 2n]");
    Canary<float> state(4 + 8, 0.0f), out(4);
    qel_flt_fir_decimate(impulse, out.data(), state.data(), coeffs, 5, 2, 8);
    expect_floats({5, 3, 1, 0}, out.data());
    EXPECT_TRUE(out.intact() && state.intact());
  }
  {
    SCOPED_TRACE("interpolator L 3: the whole set reversed at the output rate");
    Canary<float> state(4 + 9, 0.0f), out(9);
    qel_flt_fir_interpolate(impulse, out.data(), state.data(), coeffs, 5, 3, 3);
    expect_floats({5, 4, 3, 2, 1, 0, 0, 0, 0}, out.data());
    EXPECT_TRUE(out.intact() && state.intact());
  }
}

TEST(Fir, BlockShorterThanTheHistoryShiftsIt) {
  // numTaps 5, history 1 2 3 4, input 5 6: windows 1..5 and 2..6, history 3 4 5 6.
  Canary<float> state(4 + 2);
  const float hist[] = {1, 2, 3, 4};
  std::copy(hist, hist + 4, state.data());
  const float in[] = {5, 6};
  Canary<float> out(2);
  qel_flt_fir(in, out.data(), state.data(), kDecimal, 5, 2);
  expect_floats({54321, 65432}, out.data());
  expect_floats({3, 4, 5, 6}, state.data());
  EXPECT_TRUE(out.intact() && state.intact());
}

TEST(Fir, SingleTapScalesAndMovesNothing) {
  const float c = 0.5f;
  const float in[] = {2, -4, kInf, -0.0f, 6};
  Canary<float> state(5), out(5);
  qel_flt_fir(in, out.data(), state.data(), &c, 1, 5);
  expect_floats({1, -2, kInf, 0.0f, 3}, out.data());  // 0.0f + 0.5 * -0 is +0
  EXPECT_TRUE(out.intact() && state.intact());
}

TEST(Fir, EmptyBlockWritesNothing) {
  const float c[] = {1, 2, 3};
  const float hist[] = {7, 8};
  const float none[] = {0.0f};
  Canary<float> state(2), out(0);
  Canary<int16_t> out16(0);
  const int16_t none16[] = {0};
  auto reset = [&] { std::copy(hist, hist + 2, state.data()); };
  auto check = [&](const char* what) {
    SCOPED_TRACE(what);
    expect_floats({7, 8}, state.data());
    EXPECT_TRUE(state.intact() && out.intact() && out16.intact());
  };
  reset();
  qel_flt_fir(none, out.data(), state.data(), c, 3, 0);
  check("fir");
  qel_flt_fir_decimate(none, out.data(), state.data(), c, 3, 2, 1);  // blockSize < M
  check("decimate, blockSize < M");
  qel_flt_fir_decimate_int16(none16, out16.data(), state.data(), c, 3, 3, 2);
  check("decimate_int16, blockSize < M");
  qel_flt_fir_interpolate(none, out.data(), state.data(), c, 3, 4, 0);
  check("interpolate");
  qel_flt_fir_interpolate_int16(none16, out16.data(), state.data(), c, 3, 4, 0);
  check("interpolate_int16");
}

TEST(Fir, DecimatorIgnoresTheLeftoverInputs) {
  // blockSize 10, M 3, numTaps 3: windows end at inputs 0, 3, 6; input 9
  // produces nothing and stays out of the state (its slot is a canary).
  const float in[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  Canary<float> state(2 + 9, 0.0f), out(3);
  qel_flt_fir_decimate(in, out.data(), state.data(), kDecimal, 3, 3, 10);
  expect_floats({100, 432, 765}, out.data());  // 0 0 1 | 2 3 4 | 5 6 7
  expect_floats({8, 9}, state.data());
  EXPECT_TRUE(out.intact() && state.intact());
}

TEST(Fir, InterpolatorWeighsTheZeroStuffedSequence) {
  // numTaps 4, L 2, history h0 h1 h2, input 4 5: the windows run over
  // h0 h1 h2 4 0 5 0, and the history becomes 0 5 0. h0 and h2 sit where the
  // stuffed layout has zeros: junk there must count, true zeros of either sign
  // give the same sums without them.
  struct Case {
    float h0, h1, h2;
    std::vector<float> want;
    const char* why;
  };
  const Case cases[] = {
      {7, 2, 3, {4327, 432, 5043, 504}, "junk in the zero slots is weighed"},
      {0.0f, 2, -0.0f, {4020, 402, 5040, 504}, "signed zeros in the zero slots"},
      {kNaN, 2, 0.0f, {kNaN, 402, 5040, 504}, "NaN in a zero slot reaches the first output"},
  };
  const float in[] = {4, 5};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.why);
    Canary<float> state(3 + 4);
    state[0] = c.h0, state[1] = c.h1, state[2] = c.h2;
    Canary<float> out(4);
    qel_flt_fir_interpolate(in, out.data(), state.data(), kDecimal, 4, 2, 2);
    expect_floats(c.want, out.data());
    expect_floats({0, 5, 0}, state.data());
    EXPECT_TRUE(out.intact() && state.intact());
  }
}

TEST(Fir, InterpolatorSingleTapSpreadsTheInput) {
  const float c = 2.0f;
  const float in[] = {1, -3};
  Canary<float> state(6), out(6);
  qel_flt_fir_interpolate(in, out.data(), state.data(), &c, 1, 3, 2);
  expect_floats({2, 0, 0, -6, 0, 0}, out.data());
  EXPECT_TRUE(out.intact() && state.intact());
}

TEST(Fir, NonFiniteCoefficientMeetsTheInsertedZeros) {
  // inf * 0 is NaN: with an infinite coefficient every output of the stuffed
  // sequence that puts a zero under it is NaN, as the full formula says.
  const float c[] = {kInf, 1.0f};
  const float in[] = {3, 4};
  Canary<float> state(1 + 4, 0.0f), out(4);
  qel_flt_fir_interpolate(in, out.data(), state.data(), c, 2, 2, 2);
  // windows: (0,3) (3,0) (0,4) (4,0)
  expect_floats({kNaN, kInf, kNaN, kInf}, out.data());
  EXPECT_TRUE(out.intact() && state.intact());
}

struct Pcm16Case {
  std::vector<float> coeffs;
  int factor;  // M or L
  int16_t input;
  int16_t want;  // once the window is full
  const char* why;
};
const Pcm16Case kPcm16Cases[] = {
    {{0.25f, 0.25f, 0.25f, 0.25f}, 1, 1000, 1000, "averaging at PCM scale, unscaled"},
    {{0.5f}, 1, 5, 2, "2.5 truncates to 2"},
    {{0.5f}, 1, -5, -2, "-2.5 truncates toward zero"},
    {{1.0f, 1.0f}, 1, 32767, 32767, "65534 saturates"},
    {{1.0f, 1.0f}, 1, -32768, -32768, "-65536 saturates"},
    {{0.25f, 0.25f, 0.25f, 0.25f}, 2, -32768, -32768, "-32768 enters as -32768.0"},
};

TEST(Fir, SixteenBitDecimatorSaturatesAndTruncates) {
  for (const Pcm16Case& c : kPcm16Cases) {
    SCOPED_TRACE(c.why);
    const int taps = static_cast<int>(c.coeffs.size());
    const int n = 8 * c.factor;
    std::vector<int16_t> in(static_cast<size_t>(n), c.input);
    Canary<float> state(taps - 1 + n, 0.0f);
    Canary<int16_t> out(8);
    qel_flt_fir_decimate_int16(in.data(), out.data(), state.data(), c.coeffs.data(), taps, c.factor,
                               n);
    for (int k = (taps - 1) / c.factor + 1; k < 8; ++k) EXPECT_EQ(out[k], c.want) << k;
    if (taps > 1) {
      EXPECT_SAME_FLOAT(static_cast<float>(c.input), state[taps - 2]);
    }
    EXPECT_TRUE(out.intact() && state.intact());
  }
}

TEST(Fir, SixteenBitInterpolatorSaturatesAndTruncates) {
  struct Case {
    float coeff0, coeff1;
    int taps, L;
    int16_t input;
    std::vector<int16_t> want;
    const char* why;
  };
  const Case cases[] = {
      {0.5f, 0, 1, 2, 5, {2, 0, 2, 0}, "2.5 truncates to 2, zeros between"},
      {0.5f, 0, 1, 2, -5, {-2, 0, -2, 0}, "-2.5 truncates toward zero"},
      {1.0f, 1.0f, 2, 1, 32767, {32767, 32767}, "65534 saturates"},
      {1.0f, 1.0f, 2, 1, -32768, {-32768, -32768}, "-65536 saturates"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.why);
    const float coeffs[] = {c.coeff0, c.coeff1};
    const int16_t in[] = {c.input, c.input};
    Canary<float> state(c.taps - 1 + 2 * c.L, 0.0f);
    state[0] = static_cast<float>(c.input);  // a full window from the start
    Canary<int16_t> out(2 * c.L);
    qel_flt_fir_interpolate_int16(in, out.data(), state.data(), coeffs, c.taps, c.L, 2);
    for (int k = 0; k < 2 * c.L; ++k) EXPECT_EQ(out[k], c.want[static_cast<size_t>(k)]) << k;
    EXPECT_TRUE(out.intact() && state.intact());
  }
}

}  // namespace
}  // namespace qel::test

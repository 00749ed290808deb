// SPDX-License-Identifier: MIT
// The FFT of qel-denoise against the plain DFT sums, worked in double.
#include <gtest/gtest.h>

#include <cmath>

#include "fft.h"

namespace denoise {
namespace {

constexpr double kTwoPi = 6.283185307179586;

float noise(uint32_t& s) {  // [-1, 1)
  s = s * 1664525u + 1013904223u;
  return static_cast<float>(static_cast<int32_t>(s)) * 0x1.0p-31f;
}

// Float rounding over 9 radix-2 levels of 512 values in [-1, 1] stays near
// 1e-5; a wrong twiddle, index or sign is off by order 1.
constexpr double kTolerance = 1e-4;

TEST(Fft, ForwardIsTheDft) {
  uint32_t s = 1;
  float x[kFft], re[kBins], im[kBins];
  for (float& v : x) v = noise(s);
  RealFft().forward(x, re, im);
  for (int k = 0; k < kBins; ++k) {
    double r = 0.0, i = 0.0;
    for (int n = 0; n < kFft; ++n) {
      r += static_cast<double>(x[n]) * std::cos(kTwoPi * k * n / kFft);
      i -= static_cast<double>(x[n]) * std::sin(kTwoPi * k * n / kFft);
    }
    ASSERT_NEAR(re[k], r, kTolerance) << "bin " << k;
    ASSERT_NEAR(im[k], i, kTolerance) << "bin " << k;
  }
}

// x[n] = sum over all kFft bins of X[k] e^(2 pi i k n / kFft), the upper half
// being the conjugate mirror; the imaginary parts of X[0] and X[kFft / 2] count
// for nothing (they are set here to prove it).
TEST(Fft, InverseIsTheUnscaledDftSum) {
  uint32_t s = 2;
  float re[kBins], im[kBins], x[kFft];
  for (int k = 0; k < kBins; ++k) re[k] = noise(s), im[k] = noise(s);
  RealFft().inverse(re, im, x);
  for (int n = 0; n < kFft; ++n) {
    double sum =
        static_cast<double>(re[0]) + ((n % 2) ? -1.0 : 1.0) * static_cast<double>(re[kBins - 1]);
    for (int k = 1; k < kBins - 1; ++k) {
      sum += 2.0 * (static_cast<double>(re[k]) * std::cos(kTwoPi * k * n / kFft) -
                    static_cast<double>(im[k]) * std::sin(kTwoPi * k * n / kFft));
    }
    ASSERT_NEAR(x[n], sum, kTolerance * 16) << "sample " << n;
  }
}

}  // namespace
}  // namespace denoise

// SPDX-License-Identifier: MIT
// The FFT of qel-denoise against the plain DFT sums, worked in double.
#include <gtest/gtest.h>

#include <cmath>

#include "fft.h"

namespace denoise {
namespace {

float noise(uint32_t& s) {  // [-1, 1)
  s = s * 1664525u + 1013904223u;
  return static_cast<float>(static_cast<int32_t>(s)) * 0x1.0p-31f;
}
double wave(float v, int k, int n, bool sine) {  // v cos or v sin of 2 pi k n / kFft
  const double a = 6.283185307179586 * ((k * n) % kFft) / kFft;
  return static_cast<double>(v) * (sine ? std::sin(a) : std::cos(a));
}

// Rounding over 9 radix-2 levels of values near 1 stays near 1e-5; a wrong
// twiddle, index or sign is off by order 1.
constexpr double kTolerance = 1e-4;

TEST(Fft, ForwardIsTheDftAndInverseTheUnscaledSum) {
  uint32_t s = 1;
  float x[kFft], re[kBins], im[kBins];
  for (float& v : x) v = noise(s);
  RealFft().forward(x, re, im);
  for (int k = 0; k < kBins; ++k) {
    double r = 0.0, i = 0.0;
    for (int n = 0; n < kFft; ++n) r += wave(x[n], k, n, false), i -= wave(x[n], k, n, true);
    ASSERT_NEAR(re[k], r, kTolerance) << "bin " << k;
    ASSERT_NEAR(im[k], i, kTolerance) << "bin " << k;
  }
  // x[n] = sum of X[k] e^(2 pi i k n / kFft) over all kFft bins, the upper half
  // mirroring the lower one conjugated, so the imaginary parts of X[0] and
  // X[kFft / 2] count for nothing: they are set to prove it.
  for (int k = 0; k < kBins; ++k) re[k] = noise(s), im[k] = noise(s);
  RealFft().inverse(re, im, x);
  for (int n = 0; n < kFft; ++n) {
    double sum = wave(re[0], 0, n, false) + wave(re[kBins - 1], kBins - 1, n, false);
    for (int k = 1; k < kBins - 1; ++k)
      sum += 2.0 * (wave(re[k], k, n, false) - wave(im[k], k, n, true));
    ASSERT_NEAR(x[n], sum, 16 * kTolerance) << "sample " << n;
  }
}

}  // namespace
}  // namespace denoise

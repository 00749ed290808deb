// SPDX-License-Identifier: MIT
// Sine, cosine and exponential in float, by our own series: the C libraries of
// the host and of the device round theirs differently, and everything that
// feeds the output must come out the same on both.
#pragma once

#include <cmath>

namespace denoise {

struct SinCos {
  float sin, cos;
};

// sin and cos of 2 pi t. The quadrant q = round(4 t) is taken off first, which
// leaves |x| <= pi / 4, where Taylor series to x^11 and x^10 are exact to float.
inline SinCos sincos_turns(float t) {
  const float q = std::round(4.0f * t);
  const float x = (t - 0.25f * q) * 6.28318531f;
  const float x2 = x * x;
  const float s =
      x *
      (1.0f +
       x2 * (-1.0f / 6.0f +
             x2 * (1.0f / 120.0f +
                   x2 * (-1.0f / 5040.0f + x2 * (1.0f / 362880.0f + x2 * (-1.0f / 39916800.0f))))));
  const float c =
      1.0f +
      x2 * (-0.5f + x2 * (1.0f / 24.0f + x2 * (-1.0f / 720.0f + x2 * (1.0f / 40320.0f +
                                                                      x2 * (-1.0f / 3628800.0f)))));
  switch (static_cast<int>(q) & 3) {  // two's complement: -1 & 3 == 3
    case 0:
      return {s, c};
    case 1:
      return {c, -s};
    case 2:
      return {-s, -c};
    default:
      return {-c, s};
  }
}

inline float sin_turns(float t) { return sincos_turns(t).sin; }
inline float cos_turns(float t) { return sincos_turns(t).cos; }

// e^x for |x| < 80: x = n ln 2 + r with |r| <= ln 2 / 2; 2^n is exact (ldexp)
// and the series of e^r to r^9 is exact to float.
inline float exp_float(float x) {
  const float n = std::round(x * 1.44269504f);
  const float r = x - n * 0.693147181f;
  float term = 1.0f, sum = 1.0f;
  for (int k = 1; k <= 9; ++k) {
    term *= r / static_cast<float>(k);
    sum += term;
  }
  return std::ldexp(sum, static_cast<int>(n));
}

}  // namespace denoise

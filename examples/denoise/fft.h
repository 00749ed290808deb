// SPDX-License-Identifier: MIT
// The 512-point real FFT of qel-denoise, one code for the host and the Cortex-M33.
#pragma once

#include <array>

#include "pipeline.h"

namespace denoise {

// forward: X[k] = sum_n x[n] e^(-2 pi i k n / kFft) for k = 0..kBins-1, in split storage.
// inverse: kFft times the real signal whose spectrum is X (unscaled); the imaginary
// parts of X[0] and X[kBins - 1] are ignored.
// Both run a 256-point complex FFT (radix 8, 8, 4) over the samples taken in pairs (even
// ones as real parts, odd ones as imaginary parts) and one pass that splits its
// result into the real signal's bins, or merges the bins before it. The twiddle
// factors are constant tables worked out by the compiler, so both machines
// multiply by the same floats and nothing but float arithmetic runs.
class RealFft {
 public:
  void forward(const float* time, float* re, float* im);
  void inverse(const float* re, const float* im, float* time);  // time: kFft floats, no overlap
  Fft callbacks() { return Fft{&forward_cb, &inverse_cb, this}; }

 private:
  static void forward_cb(void* self, const float* time, float* re, float* im) {
    static_cast<RealFft*>(self)->forward(time, re, im);
  }
  static void inverse_cb(void* self, const float* re, const float* im, float* time) {
    static_cast<RealFft*>(self)->inverse(re, im, time);
  }
  std::array<float, kFft> work_{};  // kFft / 2 complex values, interleaved
};

}  // namespace denoise

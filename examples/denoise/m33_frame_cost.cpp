// SPDX-License-Identifier: MIT
// Instructions of one qel-denoise frame on the Cortex-M33 (run under QEMU with
// -icount shift=0): the pipeline's three stages, which hold every library call
// of the frame, counted apart from the FFT between them.
//
// The FFT is not part of the library, so it is excluded. To give the stages
// the data of a running pipeline, a plain DFT stands in for it while a few
// dozen frames of a noisy harmonic signal warm the filters and the noise
// estimate up; it is never inside a count.
#include <cmath>
#include <cstdio>

#include "counter.h"
#include "pipeline.h"

namespace {

using namespace denoise;

constexpr float kPi = 3.14159265358979f;

struct Dft {
  float cos_[kFft], sin_[kFft];
  Dft() {
    for (int n = 0; n < kFft; ++n) {
      cos_[n] = std::cos(2.0f * kPi * static_cast<float>(n) / kFft);
      sin_[n] = std::sin(2.0f * kPi * static_cast<float>(n) / kFft);
    }
  }
  static void forward(void* ctx, const float* x, float* re, float* im) {
    const auto* d = static_cast<const Dft*>(ctx);
    for (int k = 0; k < kBins; ++k) {
      float r = 0.0f, i = 0.0f;
      for (int n = 0; n < kFft; ++n) {
        const int t = (k * n) % kFft;
        r += x[n] * d->cos_[t];
        i -= x[n] * d->sin_[t];
      }
      re[k] = r;
      im[k] = i;
    }
  }
  // Unscaled, like the host's transform: the pipeline applies the 1/kFft.
  static void inverse(void* ctx, const float* re, const float* im, float* x) {
    const auto* d = static_cast<const Dft*>(ctx);
    for (int n = 0; n < kFft; ++n) {
      float s = 0.0f;
      for (int k = 0; k < kBins; ++k) {
        const int t = (k * n) % kFft;
        const float w = (k == 0 || k == kBins - 1) ? 1.0f : 2.0f;
        s += w * (re[k] * d->cos_[t] - im[k] * d->sin_[t]);
      }
      x[n] = s;
    }
  }
};

// A voiced sound switched on and off (0.5 s on, 0.3 s off) in uniform noise.
void make_frame(int frame, uint32_t& rng, int16_t* out) {
  for (int i = 0; i < kHopIn; ++i) {
    const int at = frame * kHopIn + i;
    const bool on = (at % 38400) < 24000;
    float s = 0.0f;
    if (on) {
      for (int k = 1; k <= 10; ++k) {
        const int phase = (at * k * 150) % kInRate;
        s += std::sin(2.0f * kPi * static_cast<float>(phase) / kInRate) / static_cast<float>(k);
      }
    }
    rng = rng * 1664525u + 1013904223u;
    const float noise = static_cast<float>(static_cast<int32_t>(rng >> 16) - 32768) / 32768.0f;
    out[i] = static_cast<int16_t>(6000.0f * s + 3000.0f * noise);
  }
}

Dft dft;
Pipeline pipe;
int16_t in[kHopIn], out[kHopIn];

}  // namespace

int main() {
  using qel::bench::count;
  const Fft fft{&Dft::forward, &Dft::inverse, &dft};
  uint32_t rng = 12345u;
  constexpr int kWarmFrames = 40;  // past the first noise sub-window swap
  for (int f = 0; f < kWarmFrames; ++f) {
    make_frame(f, rng, in);
    pipe.process(in, out, fft);
  }
  make_frame(kWarmFrames, rng, in);
  const double analyze = count([&] { pipe.analyze_pcm16(in); });
  fft.forward(fft.ctx, pipe.time_frame(), pipe.spectrum().re, pipe.spectrum().im);
  const double spectral = count([&] { pipe.spectral(); });
  fft.inverse(fft.ctx, pipe.out_spectrum().re, pipe.out_spectrum().im, pipe.out_time());
  const double synthesize = count([&] { pipe.synthesize_pcm16(out); });
  const double total = analyze + spectral + synthesize;

  std::printf("qel-denoise frame (768 samples at 48 kHz, 16 ms) on the Cortex-M33, FFT excluded\n");
  std::printf("| %-62s | %12s |\n", "stage (library calls)", "instructions");
  std::printf("|%s|%s|\n", "----------------------------------------------------------------",
              "--------------");
  std::printf("| %-62s | %12.0f |\n", "analyze: normalize, decimate 48->16 kHz (97 taps), window",
              analyze);
  std::printf("| %-62s | %12.0f |\n",
              "spectral: power, noise estimate, Wiener gain, apply (257 bins)", spectral);
  std::printf("| %-62s | %12.0f |\n",
              "synthesize: overlap-add, interpolate 16->48 kHz, denormalize", synthesize);
  std::printf("| %-62s | %12.0f |\n", "frame total", total);
  std::printf("frame_instructions=%.0f\n", total);
  return 0;
}

// SPDX-License-Identifier: MIT
// The cost of one whole qel-denoise frame on the Cortex-M33, stage by stage,
// the FFT included: the very code of the qel-denoise programs (pipeline.cpp,
// fft.cpp), warmed up so the filters and the noise estimate hold the data of
// a running denoiser.
//
// Each stage of one frame runs between the markers qel_mark_begin() and
// qel_mark_end() (bench/m33/marker.h), so that QEMU's trace of the run, priced
// by bench/m33/m33_cycles.py, gives its instructions and estimated cycles; the
// program then names the stages in region order, prints the frame's memory and
// measures its peak stack. scripts/m33_frame_cost.sh runs it and makes the tables.
#include <cstdint>
#include <cstdio>

#include "fft.h"
#include "marker.h"
#include "pipeline.h"

namespace {

using namespace denoise;

constexpr int kWarmFrames = 16;  // past the settling of the noise estimate

// The warm-up input: a voice switched on and off (0.5 s on, 0.3 s off), a
// 125 Hz pulse train through two resonances, in uniform noise. Cheap on
// purpose: under a trace, every instruction before the measured frame is
// logged too.
class Voice {
 public:
  void fill(int16_t* out, int n) {
    for (int i = 0; i < n; ++i, ++t_) {
      const float pulse = ((t_ % 38400) < 24000 && t_ % 384 == 0) ? 3000.0f : 0.0f;
      const float a = 1.96f * a1_ - 0.97f * a2_ + pulse;  // near 760 Hz
      const float b = 1.80f * b1_ - 0.94f * b2_ + pulse;  // near 2.9 kHz
      a2_ = a1_, a1_ = a, b2_ = b1_, b1_ = b;
      rng_ = rng_ * 1664525u + 1013904223u;
      const float noise = static_cast<float>(static_cast<int32_t>(rng_) >> 20);  // +-2048
      const float v = 0.5f * a + 0.3f * b + noise;  // peaks near 14,000
      out[i] = static_cast<int16_t>((v < -32768.0f) ? -32768.0f : (v > 32767.0f) ? 32767.0f : v);
    }
  }

 private:
  int t_ = 0;
  uint32_t rng_ = 12345u;
  float a1_ = 0.0f, a2_ = 0.0f, b1_ = 0.0f, b2_ = 0.0f;
};

[[gnu::noinline]] void whole_frame(Pipeline& pipe, RealFft& fft, const int16_t* in, int16_t* out) {
  pipe.process(in, out, fft.callbacks());
}

// Peak stack of one whole frame, in bytes below this function's frame: the
// stack below it is painted, the frame runs, and the lowest word that changed
// marks the depth it reached.
[[gnu::noinline]] int frame_stack(Pipeline& pipe, RealFft& fft, const int16_t* in, int16_t* out) {
  constexpr uint32_t kPaint = 0x5AA5C33Cu;
  constexpr int kWords = 4096;  // 16 KiB: far more than a frame takes
  volatile uint32_t* sp = nullptr;
  __asm volatile("mov %0, sp" : "=r"(sp));
  volatile uint32_t* const low = sp - kWords;
  for (volatile uint32_t* w = low; w < sp; ++w) *w = kPaint;
  whole_frame(pipe, fft, in, out);
  volatile uint32_t* w = low;
  while (w < sp && *w == kPaint) ++w;
  return static_cast<int>(reinterpret_cast<uintptr_t>(sp) - reinterpret_cast<uintptr_t>(w));
}

}  // namespace

int main() {
  static Pipeline pipe;
  static RealFft fft;
  Voice voice;
  int16_t in[kHopIn], out[kHopIn];
  for (int f = 0; f <= kWarmFrames; ++f) {
    voice.fill(in, kHopIn);
    if (f < kWarmFrames) pipe.process(in, out, fft.callbacks());
  }
  // One frame, stage by stage, each a marked region, as process() runs it.
  qel_mark_begin();
  pipe.analyze_pcm16(in);
  qel_mark_end();
  qel_mark_begin();
  fft.forward(pipe.time_frame(), pipe.spectrum().re, pipe.spectrum().im);
  qel_mark_end();
  qel_mark_begin();
  pipe.spectral();
  qel_mark_end();
  qel_mark_begin();
  fft.inverse(pipe.out_spectrum().re, pipe.out_spectrum().im, pipe.out_time());
  qel_mark_end();
  qel_mark_begin();
  pipe.synthesize_pcm16(out);
  qel_mark_end();
  std::printf("stage\tanalyze: 16-bit to float, decimate 48->16 kHz (%d taps), window\n", kTaps);
  for (const char* stage : {
           "FFT: forward, 512-point real (fft.cpp)",
           "spectral: power, noise estimate, gain, apply (257 bins)",
           "FFT: inverse, 512-point real (fft.cpp)",
           "synthesize: overlap-add, interpolate 16->48 kHz, to 16-bit",
       }) {
    std::printf("stage\t%s\n", stage);
  }
  std::printf("memory\tframe state (Pipeline: filters, windows, buffers, noise and gain)\t%d\n",
              static_cast<int>(sizeof(Pipeline)));
  std::printf("memory\tFFT work buffer (RealFft)\t%d\n", static_cast<int>(sizeof(RealFft)));
  voice.fill(in, kHopIn);
  std::printf("memory\tpeak stack of one whole frame (painted)\t%d\n",
              frame_stack(pipe, fft, in, out));
  return 0;
}

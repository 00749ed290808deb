// SPDX-License-Identifier: MIT
// The cost of one whole qel-denoise frame on the Cortex-M33, stage by stage,
// the FFT included: the very code of the qel-denoise programs (pipeline.cpp,
// fft.cpp), warmed up on the embedded test signal so the filters and the noise
// estimate hold the data of a running denoiser.
//
// Run under QEMU with -icount shift=0, it prints each stage's instructions
// (SysTick counter of bench/m33). Each stage also runs once between the
// markers qel_mark_begin() and qel_mark_end(), in table order, so that a
// trace of the run priced by bench/m33/m33_cycles.py gives estimated cycles
// (examples/denoise/m33_frame_cost.sh puts both in one table).
#include <cstdint>
#include <cstdio>

#include "counter.h"
#include "fft.h"
#include "pipeline.h"
#include "testsignal.h"

// Until bench/m33 has them: the region markers a trace pricer looks for.
extern "C" [[gnu::noinline]] void qel_mark_begin() { __asm volatile("" ::: "memory"); }
extern "C" [[gnu::noinline]] void qel_mark_end() { __asm volatile("" ::: "memory"); }

namespace {

using namespace denoise;

constexpr int kWarmFrames = 41;  // past the first swap of the noise sub-windows

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

int main(int argc, char** argv) {
  using qel::bench::count;
  const bool counted = !(argc > 1 && argv[1][0] == 't');  // "trace": markers only
  const TestSignal sig = make_test_signal(static_cast<double>(kWarmFrames + 1) * kHopIn / kInRate);
  static Pipeline pipe;
  static RealFft fft;
  int16_t out[kHopIn];
  for (int f = 0; f < kWarmFrames; ++f) pipe.process(&sig.noisy[f * kHopIn], out, fft.callbacks());
  const int16_t* in = &sig.noisy[kWarmFrames * kHopIn];

  struct Stage {
    const char* name;
    void (*run)(const int16_t* in, int16_t* out);
  };
  // Captureless, so that they convert to plain function pointers; the state is static above.
  const Stage stages[] = {
      {"analyze: 16-bit to float, decimate 48->16 kHz (97 taps), window",
       [](const int16_t* x, int16_t*) { pipe.analyze_pcm16(x); }},
      {"FFT: forward, 512-point real (fft.cpp)",
       [](const int16_t*, int16_t*) {
         fft.forward(pipe.time_frame(), pipe.spectrum().re, pipe.spectrum().im);
       }},
      {"spectral: power, noise estimate, gain, apply (257 bins)",
       [](const int16_t*, int16_t*) { pipe.spectral(); }},
      {"FFT: inverse, 512-point real (fft.cpp)",
       [](const int16_t*, int16_t*) {
         fft.inverse(pipe.out_spectrum().re, pipe.out_spectrum().im, pipe.out_time());
       }},
      {"synthesize: overlap-add, interpolate 16->48 kHz, to 16-bit",
       [](const int16_t*, int16_t* y) { pipe.synthesize_pcm16(y); }},
  };
  for (const Stage& s : stages) {
    qel_mark_begin();
    s.run(in, out);
    qel_mark_end();
  }
  if (!counted) return 0;
  double total = 0.0;
  for (const Stage& s : stages) {
    const double n = count([&] { s.run(in, out); });
    std::printf("stage\t%s\t%.0f\n", s.name, n);
    total += n;
  }
  std::printf("memory\tframe state (Pipeline: filters, windows, buffers, noise and gain)\t%d\n",
              static_cast<int>(sizeof(Pipeline)));
  std::printf("memory\tFFT work buffer (RealFft)\t%d\n", static_cast<int>(sizeof(RealFft)));
  std::printf("memory\tpeak stack of one whole frame (painted)\t%d\n",
              frame_stack(pipe, fft, in, out));
  std::printf("frame_instructions=%.0f\n", total);
  return 0;
}

// SPDX-License-Identifier: MIT
// The frame loop of qel-denoise (host and device): 16-bit or 24-bit PCM at the edges.
#include "denoise.h"

#include <chrono>
#include <cmath>
#include <memory>

#include "fft.h"

namespace denoise {

Result run(const Pcm& in, const Params& params, int spectrogram_columns,
           const std::function<void(double)>& progress) {
  const size_t n = in.size();
  const size_t needed = n + kDelay;
  const int frames = static_cast<int>((needed + kHopIn - 1) / kHopIn);
  const size_t padded = static_cast<size_t>(frames) * kHopIn;
  Result r{Pcm{},
           frames,
           0.0,
           0,
           Spectrogram(frames, kBins, spectrogram_columns),
           Spectrogram(frames, kBins, spectrogram_columns)};

  auto pipe = std::make_unique<Pipeline>(params);
  auto transform = std::make_unique<RealFft>();
  const Fft fft = transform->callbacks();
  std::vector<int16_t> in16, out16;
  std::vector<int32_t> in24, out24;
  if (in.bits == 16) {
    in16 = in.s16;
    in16.resize(padded, 0);
    out16.resize(padded);
  } else {
    in24 = in.s24;
    in24.resize(padded, 0);
    out24.resize(padded);
  }
  std::vector<float> buf(kHopIn);

  const auto t0 = std::chrono::steady_clock::now();
  for (int f = 0; f < frames; ++f) {
    const size_t at = static_cast<size_t>(f) * kHopIn;
    if (in.bits == 16) {
      pipe->process(&in16[at], &out16[at], fft);
    } else {
      qel_vec_normalize24(&in24[at], buf.data(), kHopIn);
      pipe->analyze(buf.data());
      fft.forward(fft.ctx, pipe->time_frame(), pipe->spectrum().re, pipe->spectrum().im);
      pipe->spectral();
      fft.inverse(fft.ctx, pipe->out_spectrum().re, pipe->out_spectrum().im, pipe->out_time());
      pipe->synthesize(buf.data());
      qel_vec_denormalize24(buf.data(), &out24[at], kHopIn);
    }
    for (int k = 0; k < kFft; ++k) r.nonfinite += std::isfinite(pipe->out_time()[k]) ? 0 : 1;
    r.in_spec.add(f, pipe->input_power());
    r.out_spec.add(f, pipe->output_power());
    if (progress) progress(static_cast<double>(f + 1) / frames);
  }
  r.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();

  r.out.bits = in.bits;
  if (in.bits == 16) {
    r.out.s16.assign(out16.begin() + kDelay, out16.begin() + kDelay + static_cast<long>(n));
  } else {
    r.out.s24.assign(out24.begin() + kDelay, out24.begin() + kDelay + static_cast<long>(n));
  }
  return r;
}

double snr_db(const std::vector<double>& clean, const std::vector<int16_t>& x) {
  const size_t n = std::min(clean.size(), x.size());
  double s = 0.0, e = 0.0;
  for (size_t i = 0; i < n; ++i) {
    const double d = static_cast<double>(x[i]) - clean[i];
    s += clean[i] * clean[i];
    e += d * d;
  }
  return 10.0 * std::log10(s / (e > 0.0 ? e : 1e-300));
}

}  // namespace denoise

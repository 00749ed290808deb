// SPDX-License-Identifier: MIT
// The frame loop of qel-denoise (host and device): 16-bit or 24-bit PCM at the edges.
#include "denoise.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>

#include "fft.h"

namespace denoise {

Result run(const Stream& s, const Params& params, int spectrogram_columns,
           const std::function<void(double)>& progress) {
  const size_t n = s.size;
  const int frames = static_cast<int>((n + kDelay + kHopIn - 1) / kHopIn);
  Result r{Pcm{},
           0,
           frames,
           0.0,
           0,
           Spectrogram(frames, kBins, spectrogram_columns),
           Spectrogram(frames, kBins, spectrogram_columns)};

  auto pipe = std::make_unique<Pipeline>(params);
  auto transform = std::make_unique<RealFft>();
  const Fft fft = transform->callbacks();
  std::vector<int16_t> in16(kHopIn), out16(kHopIn);
  std::vector<int32_t> in24(kHopIn), out24(kHopIn);
  std::vector<float> buf(kHopIn);
  size_t emitted = 0;  // aligned output samples written so far

  const auto t0 = std::chrono::steady_clock::now();
  for (int f = 0; f < frames; ++f) {
    // Past the end (or a short read) the input is zeros: the flush.
    const size_t got = s.read(in16.data(), in24.data(), kHopIn);
    std::fill(in16.begin() + static_cast<long>(got), in16.end(), int16_t{0});
    std::fill(in24.begin() + static_cast<long>(got), in24.end(), 0);
    if (s.bits == 16) {
      pipe->process(in16.data(), out16.data(), fft);
    } else {
      qel_vec_normalize24(in24.data(), buf.data(), kHopIn);
      pipe->analyze(buf.data());
      fft.forward(fft.ctx, pipe->time_frame(), pipe->spectrum().re, pipe->spectrum().im);
      pipe->spectral();
      fft.inverse(fft.ctx, pipe->out_spectrum().re, pipe->out_spectrum().im, pipe->out_time());
      pipe->synthesize(buf.data());
      qel_vec_denormalize24(buf.data(), out24.data(), kHopIn);
    }
    for (int k = 0; k < kFft; ++k) r.nonfinite += std::isfinite(pipe->out_time()[k]) ? 0 : 1;
    r.in_spec.add(f, pipe->input_power());
    r.out_spec.add(f, pipe->output_power());
    // This frame's samples are outputs [f kHopIn, (f + 1) kHopIn) of the
    // pipeline, that is aligned samples from f kHopIn - kDelay on.
    const size_t hop = kHopIn, delay = kDelay, first = static_cast<size_t>(f) * hop;
    const size_t skip = first < delay ? std::min(delay - first, hop) : 0;
    const size_t count = std::min(hop - skip, n - emitted);
    if (count > 0) s.write(&out16[skip], &out24[skip], count);
    emitted += count;
    if (progress) progress(static_cast<double>(f + 1) / frames);
  }
  r.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  r.out.bits = s.bits;
  r.written = emitted;
  return r;
}

Result run(const Pcm& in, const Params& params, int spectrogram_columns,
           const std::function<void(double)>& progress) {
  size_t taken = 0;
  Pcm out;
  out.bits = in.bits;
  if (in.bits == 16) {
    out.s16.reserve(in.size());
  } else {
    out.s24.reserve(in.size());
  }
  Stream s;
  s.bits = in.bits;
  s.size = in.size();
  s.read = [&](int16_t* s16, int32_t* s24, size_t n) {
    n = std::min(n, in.size() - taken);
    if (in.bits == 16) {
      std::copy_n(in.s16.begin() + static_cast<long>(taken), n, s16);
    } else {
      std::copy_n(in.s24.begin() + static_cast<long>(taken), n, s24);
    }
    taken += n;
    return n;
  };
  s.write = [&](const int16_t* s16, const int32_t* s24, size_t n) {
    if (in.bits == 16) {
      out.s16.insert(out.s16.end(), s16, s16 + n);
    } else {
      out.s24.insert(out.s24.end(), s24, s24 + n);
    }
  };
  Result r = run(s, params, spectrogram_columns, progress);
  r.out = std::move(out);
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

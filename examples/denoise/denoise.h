// SPDX-License-Identifier: MIT
// A whole signal through the frame pipeline, with the FFT of fft.h.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "files.h"
#include "pipeline.h"
#include "spectrogram.h"

namespace denoise {

struct Result {
  Pcm out;                  // same length and bit depth as the input, time-aligned with it
  size_t written = 0;       // aligned output samples delivered (the input's length)
  int frames = 0;           // frames run, the flush frames included
  double seconds = 0.0;     // wall time of the frame loop
  long long nonfinite = 0;  // non-finite samples out of the inverse FFT (should be 0)
  Spectrogram in_spec, out_spec;
};

// A signal of `size` samples at `bits` (16 or 24) that arrives and leaves in
// blocks: read fills up to n samples (into s16 or s24 by bits) and returns how
// many; write takes the next n aligned output samples.
struct Stream {
  int bits = 16;
  size_t size = 0;
  std::function<size_t(int16_t* s16, int32_t* s24, size_t n)> read;
  std::function<void(const int16_t* s16, const int32_t* s24, size_t n)> write;
};

// Runs a stream through the pipeline frame by frame, holding one frame of it
// at a time. The output is aligned: the first kDelay samples the pipeline
// emits (its filter and overlap-add delay) are dropped and zeros are fed past
// the end to flush the rest out, so output sample i belongs to input sample i
// and both have the same length. progress(fraction) is called after every
// frame when given. The Result's out stays empty: the samples went to write.
Result run(const Stream& s, const Params& params, int spectrogram_columns,
           const std::function<void(double)>& progress = nullptr);

// The same for a signal in memory, the output gathered into the Result.
Result run(const Pcm& in, const Params& params, int spectrogram_columns,
           const std::function<void(double)>& progress = nullptr);

// 10 log10(sum clean^2 / sum (x - clean)^2) over the common length, in dB.
double snr_db(const std::vector<double>& clean, const std::vector<int16_t>& x);

}  // namespace denoise

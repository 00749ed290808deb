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
  int frames = 0;           // frames run, the flush frames included
  double seconds = 0.0;     // wall time of the frame loop
  long long nonfinite = 0;  // non-finite samples out of the inverse FFT (should be 0)
  Spectrogram in_spec, out_spec;
};

// Runs `in` through the pipeline frame by frame. The output is aligned: the
// first kDelay samples the pipeline emits (its filter and overlap-add delay)
// are dropped and zeros are fed past the end to flush the rest out, so output
// sample i belongs to input sample i and both have the same length.
// progress(fraction) is called after every frame when given.
Result run(const Pcm& in, const Params& params, int spectrogram_columns,
           const std::function<void(double)>& progress = nullptr);

// 10 log10(sum clean^2 / sum (x - clean)^2) over the common length, in dB.
double snr_db(const std::vector<double>& clean, const std::vector<int16_t>& x);

}  // namespace denoise

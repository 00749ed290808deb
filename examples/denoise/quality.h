// SPDX-License-Identifier: MIT
// Speech quality measures of a processed signal against its clean original, on
// the host: the demo's report and the evaluation (qel-denoise-score) use these.
#pragma once

#include <cstdint>
#include <vector>

namespace denoise {

struct Quality {
  double snr_db = 0.0;     // whole-signal SNR
  double segsnr_db = 0.0;  // mean of per-frame SNRs clamped to [-10, 35] dB, speech frames
  double lsd_db = 0.0;     // log-spectral distance, 0 to 8 kHz, speech frames
  double stoi = 0.0;       // short-time objective intelligibility, 0 to 1
};

// Both signals at `rate` Hz, sample-aligned, compared over their common length.
Quality measure(const std::vector<double>& clean, const std::vector<double>& x, int rate);

double seg_snr_db(const std::vector<double>& clean, const std::vector<double>& x, int rate);
double lsd_db(const std::vector<double>& clean, const std::vector<double>& x, int rate);
double stoi(const std::vector<double>& clean, const std::vector<double>& x, int rate);

// Rational-ratio resampling (windowed-sinc polyphase, linear phase, no delay):
// rate_in -> rate_out, output length n * rate_out / rate_in.
std::vector<double> resample(const std::vector<double>& x, int rate_in, int rate_out);

std::vector<double> to_double(const std::vector<int16_t>& x);

}  // namespace denoise

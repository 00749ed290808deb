// SPDX-License-Identifier: MIT
// The embedded default input of qel-denoise: speech-like bursts in noise.
#pragma once

#include <cstdint>
#include <vector>

namespace denoise {

struct TestSignal {
  std::vector<double> clean;   // the speech-like part alone, in 16-bit units
  std::vector<int16_t> noisy;  // clean + noise, rounded and saturated: the input
};

// A deterministic 48 kHz signal of `seconds` length, the same bits on every
// machine that rounds floats the IEEE way (the Cortex-M33 included): voiced
// bursts of 0.25 to 0.7 s with a gliding pitch of 95 to 230 Hz, harmonics up to
// 4 kHz shaped by two formants, separated by pauses of 0.15 to 0.45 s, plus
// coloured noise (mostly below 2 kHz, some white) scaled to `snr_db` over the
// whole signal.
TestSignal make_test_signal(double seconds, double snr_db = 5.0, uint64_t seed = 0x5eedf00dULL);

}  // namespace denoise

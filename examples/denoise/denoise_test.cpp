// SPDX-License-Identifier: MIT
// The pipeline in-process: silence, time alignment, and the 24-bit path.
#include <gtest/gtest.h>

#include <cmath>

#include "denoise.h"
#include "testsignal.h"

namespace denoise {
namespace {

Pcm pcm16(const std::vector<int16_t>& s) {
  Pcm p;
  p.s16 = s;
  return p;
}

// The end-to-end run (cli_test) checks the SNR gain; here, what it cannot see.
TEST(Denoise, DigitalSilenceStaysSilent) {
  const Result r = run(pcm16(std::vector<int16_t>(48000, 0)), Params{}, 8);
  EXPECT_EQ(r.nonfinite, 0);
  for (int16_t s : r.out.s16) ASSERT_EQ(s, 0);
}

// With the gain held at 1 the pipeline is resampling and a reconstructing
// STFT only: after the delay is removed, a signal inside the pass band comes
// back sample-aligned. One sample of misalignment would cap this near 20 dB.
TEST(Denoise, OutputIsAlignedWithInput) {
  const TestSignal sig = make_test_signal(1.0);
  std::vector<int16_t> clean;
  for (double v : sig.clean) clean.push_back(static_cast<int16_t>(std::lround(v)));
  Params p;
  p.bypass = true;
  const Result r = run(pcm16(clean), p, 8);
  ASSERT_EQ(r.out.s16.size(), clean.size());
  EXPECT_GT(snr_db(sig.clean, r.out.s16), 40.0);
}

// 24-bit samples take the 24-bit conversions and must give the 16-bit result,
// 256 times larger, up to the finer rounding.
TEST(Denoise, TwentyFourBitInputMatchesSixteenBit) {
  const TestSignal sig = make_test_signal(1.0);
  Pcm p24;
  p24.bits = 24;
  for (int16_t s : sig.noisy) p24.s24.push_back(static_cast<int32_t>(s) * 256);
  const Result r16 = run(pcm16(sig.noisy), Params{}, 8);
  const Result r24 = run(p24, Params{}, 8);
  ASSERT_EQ(r24.out.bits, 24);
  ASSERT_EQ(r24.out.s24.size(), r16.out.s16.size());
  for (size_t i = 0; i < r16.out.s16.size(); ++i) {
    ASSERT_NEAR(r24.out.s24[i] / 256.0, r16.out.s16[i], 1.0) << "sample " << i;
  }
}

}  // namespace
}  // namespace denoise

// SPDX-License-Identifier: MIT
// Delay line and windowed accumulation against the plain references: every
// length 0..70 and a few large ones, random lines and write positions, inputs
// with specials, canaries past every output, in-place runs.
#include <gtest/gtest.h>

#include <vector>

#include "ref/framebuf_ref.h"
#include "support/soak.h"
#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

enum class Alias { kNone, kOutIsIn, kOutIsGain };

// Two calls in a row, the second at the position the first leaves, so a line
// carried across calls is compared too.
void check_circular(Rng& rng, int n, int delay_len, Alias alias) {
  const std::vector<float> line0 = rng.values(delay_len);
  const int write_index = rng.below(delay_len);
  Canary<float> want_line(line0), got_line(line0);
  int p = write_index;
  for (int call = 0; call < 2; ++call) {
    SCOPED_TRACE(call);
    const std::vector<float> in = rng.values(n), gain = rng.values(n);
    Canary<float> want(n), got(in);  // got starts as in: it may serve as in
    ref::circular(want.data(), want_line.data(), in.data(), gain.data(), delay_len, p, n);
    const float* in_arg = in.data();
    const float* gain_arg = gain.data();
    if (alias == Alias::kOutIsIn) {
      in_arg = got.data();
    } else if (alias == Alias::kOutIsGain) {
      got = Canary<float>(gain);
      gain_arg = got.data();
    }
    qel_fl_circular(got.data(), got_line.data(), in_arg, gain_arg, delay_len, p, n);
    expect_same_values(want, got, "out");
    expect_same_values(want_line, got_line, "line");
    p = (p + n) % delay_len;
  }
}

TEST(FramebufDiff, CircularMatchesReference) {
  randomized(0x5eed0d1u, [&](Rng& rng) {
    for (int n : diff_lengths({127, 480, 513})) {
      SCOPED_TRACE(n);
      for (int delay_len : {1, 2, 3, 4, 5, 7, 8, 9, 1 + rng.below(70), 1 + rng.below(70), 480}) {
        SCOPED_TRACE(delay_len);
        check_circular(rng, n, delay_len, Alias::kNone);
      }
      for (Alias alias : {Alias::kOutIsIn, Alias::kOutIsGain}) {
        SCOPED_TRACE(alias == Alias::kOutIsIn ? "out is in" : "out is gain");
        check_circular(rng, n, 1 + rng.below(70), alias);
      }
    }
  });
}

TEST(FramebufDiff, MaaMatchesReference) {
  randomized(0x5eed0d2u, [&](Rng& rng) {
    for (int n : diff_lengths({127, 480, 513})) {
      SCOPED_TRACE(n);
      // The kernel reads window[n] down to window[1]; window[0] keeps the
      // pointer inside the array when n is 0.
      const std::vector<float> window = rng.values(n + 1);
      const float* window_last = window.data() + n;
      const std::vector<float> fft0 = rng.values(n), buff = rng.values(n);

      Canary<float> want(fft0), got(fft0);
      for (int call = 0; call < 2; ++call) {  // accumulates across calls
        ref::maa(want.data(), buff.data(), window_last, n);
        qel_fl_maa(got.data(), buff.data(), window_last, n);
        expect_same_values(want, got);
      }

      Canary<float> want_in_place(buff), got_in_place(buff);  // fft_data is buff
      ref::maa(want_in_place.data(), want_in_place.data(), window_last, n);
      qel_fl_maa(got_in_place.data(), got_in_place.data(), window_last, n);
      expect_same_values(want_in_place, got_in_place, "in place");
    }
  });
}

}  // namespace
}  // namespace qel::test

// SPDX-License-Identifier: MIT
// PCM conversion against the plain references: every length 0..70 and a few
// large ones, random inputs with specials, canaries past every output.
#include <gtest/gtest.h>

#include <vector>

#include "ref/pcm_ref.h"
#include "support/soak.h"
#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

template <typename T>
void expect_same_ints(const Canary<T>& want, const Canary<T>& got) {
  for (int k = 0; k < want.size(); ++k) ASSERT_EQ(want[k], got[k]) << "element " << k;
  EXPECT_TRUE(got.intact());
}

TEST(PcmDiff, EveryConversionMatchesReference) {
  randomized(0x5eed0001u, [](Rng& rng) {
    for (int n : diff_lengths()) {
      SCOPED_TRACE(n);
      std::vector<int16_t> s16;
      std::vector<int32_t> s24;
      for (int k = 0; k < n; ++k) {
        s16.push_back(rng.sample());
        s24.push_back(static_cast<int32_t>(rng.word()) >>
                      (rng.below(2) ? 8 : 6));  // some beyond 24 bits
      }
      // Floats around full scale, with specials.
      const std::vector<float> f = rng.values(n, 1.2f, 6);

      Canary<float> want_f(n), got_f(n);
      ref::normalize(s16.data(), want_f.data(), n);
      qel_vec_normalize(s16.data(), got_f.data(), n);
      expect_same_values(want_f, got_f, "normalize");

      Canary<float> want_f24(n), got_f24(n);
      ref::normalize24(s24.data(), want_f24.data(), n);
      qel_vec_normalize24(s24.data(), got_f24.data(), n);
      expect_same_values(want_f24, got_f24, "normalize24");

      Canary<int16_t> want_s(n), got_s(n);
      ref::denormalize(f.data(), want_s.data(), n);
      qel_vec_denormalize(f.data(), got_s.data(), n);
      expect_same_ints(want_s, got_s);

      Canary<int32_t> want_i(n), got_i(n);
      ref::denormalize24(f.data(), want_i.data(), n);
      qel_vec_denormalize24(f.data(), got_i.data(), n);
      expect_same_ints(want_i, got_i);
    }
  });
}

}  // namespace
}  // namespace qel::test

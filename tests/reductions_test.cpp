// SPDX-License-Identifier: MIT
// Sums, variance and peak: hand-worked values, including inputs where the
// grouping of the sum decides the rounding.
#include <gtest/gtest.h>

#include <vector>

#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

constexpr float k2p24 = 16777216.0f;  // 2^24: adding 1 alone rounds back

struct SumCase {
  std::vector<float> x;
  float want;
  const char* why;
};

TEST(Reductions, SumGroupsEightThenAddsTheRestOneByOne) {
  const SumCase cases[] = {
      {{}, 0.0f, "empty is +0"},
      {{-0.0f}, 0.0f, "0.0 + -0 is +0"},
      {{-0.0f, -0.0f, -0.0f, -0.0f, -0.0f, -0.0f, -0.0f, -0.0f}, 0.0f, "group of -0 joins +0"},
      {{k2p24, 0, 0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 0},
       16777218.0f,
       "the ones meet in their group first; plain order would give 2^24"},
      {{k2p24, 0, 0, 0, 0, 0, 0, 0, 1, 1},
       k2p24,
       "the remainder joins the running sum one at a time"},
      {{k2p24, 1, 0, 0, 0, 0, 0, 0, 1}, k2p24, "ninth element after the group subtotal"},
      {{1, 1, 0, 0, 0, 0, 0, 0, k2p24, 1, 1, 0, 0, 0, 0, 0},
       16777218.0f,
       "2 + ((2^24 + 1) + 1): the ones are lost inside their group; plain order gives 2^24 + 4"},
      {{1, 2, 3, 4, 5, 6, 7}, 28.0f, "below 8: plain sum"},
      {{kInf, 1, -kInf}, kNaN, "inf - inf"},
  };
  for (const SumCase& c : cases) {
    SCOPED_TRACE(c.why);
    const int n = static_cast<int>(c.x.size());
    EXPECT_SAME_FLOAT(c.want, qel_fl_sum(c.x.data(), 0, n));
    std::vector<float> x = c.x;
    qel_flt_vec A = {n, x.data()};
    EXPECT_SAME_FLOAT(c.want, qel_flt_vec_sum(&A));
    // The same values behind three others: the groups start at the offset.
    std::vector<float> shifted = {kNaN, kInf, -kInf};
    shifted.insert(shifted.end(), c.x.begin(), c.x.end());
    EXPECT_SAME_FLOAT(c.want, qel_fl_sum(shifted.data(), 3, n));
    qel_flt_vec S = {1, shifted.data()};  // sum_part does not look at dim
    EXPECT_SAME_FLOAT(c.want, qel_flt_vec_sum_part(&S, 3, n));
  }
}

struct VarCase {
  std::vector<float> x;
  float want;
  const char* why;
};

TEST(Reductions, VarianceIsTwoPassWithDivisorNMinusOne) {
  const VarCase cases[] = {
      {{1, 2, 3, 4}, 5.0f / 3.0f, "5/3, not 1.25"},
      {{}, -0.0f, "dim 0: 0.0 / -1 is -0, never NaN"},
      {{kNaN}, 0.0f, "dim 1 returns 0 at once"},
      {{1, 2, 3, 4, 5, 6, 7}, 28.0f / 6.0f, "7 elements: 28 / 6"},
      {{1, 2, 3, 4, 5, 6, 7, 8}, 6.0f, "8 elements: 42 / 7"},
      {{1, 2, 3, 4, 5, 6, 7, 8, 9}, 7.5f, "9 elements: 60 / 8"},
      {{0.1f, 0.1f, 0.1f}, 0.0f, "a constant vector"},
      {{-3, 3}, 18.0f, "mean 0: (9 + 9) / 1"},
      {{1, kInf}, kNaN, "an infinity makes the mean infinite"},
  };
  for (const VarCase& c : cases) {
    SCOPED_TRACE(c.why);
    std::vector<float> x = c.x;
    qel_flt_vec A = {static_cast<int>(x.size()), x.data()};
    EXPECT_SAME_FLOAT(c.want, qel_flt_vec_var(&A));
  }
}

TEST(Reductions, VarianceFirstPassIsPlainLeftToRight) {
  // Grouped, the ones would survive; plain, the first pass gives 2^24 and the
  // mean 2^24 / 10 = 1677721.625, which fixes the deviations below.
  std::vector<float> x = {k2p24, 0, 0, 0, 0, 0, 0, 0, 1, 1};
  qel_flt_vec A = {10, x.data()};
  const float avg = 1677721.625f;
  float var = 0.0f;
  for (float v : x) var = var + (v - avg) * (v - avg);
  EXPECT_SAME_FLOAT(var / 9.0f, qel_flt_vec_var(&A));
}

struct PeakCase {
  std::vector<float> x;
  float want;
  const char* why;
};

TEST(Reductions, AbsMaxStartsAtZeroAndPassesOverNaN) {
  const PeakCase cases[] = {
      {{-3, 2}, 3.0f, "negation of the negative"},
      {{}, 0.0f, "empty is +0"},
      {{0.0f, -0.0f, -0.0f}, 0.0f, "zeros give +0"},
      {{kNaN, -1}, 1.0f, "NaN passed over"},
      {{-kNaN}, 0.0f, "only a NaN: +0"},
      {{2}, 2.0f, "one element"},
      {{1, -7, 3, 7, 2, -1, 0}, 7.0f, "7 elements, tie of |-7| and 7"},
      {{1, 2, 3, 4, 5, 6, 7, -8}, 8.0f, "8 elements, last wins"},
      {{-9, 2, 3, 4, 5, 6, 7, 8, 1}, 9.0f, "9 elements, first wins"},
      {{-kInf, 1}, kInf, "-inf gives +inf"},
      {{-kDenormMin}, kDenormMin, "denormals are kept"},
  };
  for (const PeakCase& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_SAME_FLOAT(c.want, qel_fl_abs_max(c.x.data(), static_cast<int>(c.x.size())));
  }
}

}  // namespace
}  // namespace qel::test

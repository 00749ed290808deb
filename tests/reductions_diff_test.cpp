// SPDX-License-Identifier: MIT
// Sums, variance and peak against the plain references: every length 0..70 and
// a few large ones, random inputs with specials, offsets into the array.
#include <gtest/gtest.h>

#include <vector>

#include "ref/reductions_ref.h"
#include "support/soak.h"
#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

TEST(ReductionsDiff, EveryReductionMatchesReference) {
  randomized(0x5eed4101u, [&](Rng& rng) {
    for (int n : diff_lengths()) {
      SCOPED_TRACE(n);
      // Wide range so that the grouping of the sum shows in the rounding; one in
      // three runs without specials so the finite sums are compared too.
      const int one_in = (n % 3 == 0) ? 0 : 16;
      const int offset = rng.below(9);
      std::vector<float> x = rng.values(offset + n, 1e6f, one_in);
      const std::vector<float> before = x;
      qel_flt_vec A = {n, x.data() + offset};
      qel_flt_vec whole = {offset + n, x.data()};

      EXPECT_SAME_FLOAT(ref::fl_sum(x.data(), offset, n), qel_fl_sum(x.data(), offset, n));
      EXPECT_SAME_FLOAT(ref::flt_vec_sum(&A), qel_flt_vec_sum(&A));
      EXPECT_SAME_FLOAT(ref::flt_vec_sum_part(&whole, offset, n),
                        qel_flt_vec_sum_part(&whole, offset, n));
      EXPECT_SAME_FLOAT(ref::flt_vec_var(&A), qel_flt_vec_var(&A));
      EXPECT_SAME_FLOAT(ref::fl_abs_max(x.data() + offset, n),
                        qel_fl_abs_max(x.data() + offset, n));
      expect_same_values(before.data(), x.data(), offset + n, "input unchanged");
      EXPECT_EQ(A.dim, n);
      EXPECT_EQ(whole.dim, offset + n);
    }
  });
}

}  // namespace
}  // namespace qel::test

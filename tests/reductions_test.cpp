// SPDX-License-Identifier: MIT
// Sums, variance and peak: the worked values, among them inputs whose
// rounding shows the order of the additions.
#include <gtest/gtest.h>

#include <vector>

#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

constexpr float k2p24 = 16777216.0f;  // 2^24: adding 1 alone rounds back

float sum(std::vector<float>& x) { return qel_fl_sum(x.data(), 0, static_cast<int>(x.size())); }
// A start may be negative: it counts from wherever the caller points.
float sum_back(std::vector<float>& x) {
  const int n = static_cast<int>(x.size());
  qel_flt_vec tail{0, x.data() + n};
  return qel_flt_vec_sum_part(&tail, -n, n);
}
float var(std::vector<float>& x) {
  qel_flt_vec A{static_cast<int>(x.size()), x.data()};
  return qel_flt_vec_var(&A);
}
float peak(std::vector<float>& x) { return qel_fl_abs_max(x.data(), static_cast<int>(x.size())); }

struct Case {
  const char* why;
  float (*fn)(std::vector<float>&);
  std::vector<float> x;
  float want;
};
const Case kCases[] = {
    {"the ones meet in their group first",
     sum,
     {k2p24, 0, 0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 0},
     16777218.0f},
    {"the remainder joins the sum one at a time", sum, {k2p24, 0, 0, 0, 0, 0, 0, 0, 1, 1}, k2p24},
    {"empty sum is +0", sum, {}, 0.0f},
    {"a negative start sums back from the pointer", sum_back, {1, 2, 0.5f}, 3.5f},
    {"a group of -0 joins +0", sum, {-0.0f, -0.0f, -0.0f, -0.0f, -0.0f, -0.0f, -0.0f, -0.0f}, 0.0f},
    {"variance of 1, 2, 3, 4 is 5/3", var, {1, 2, 3, 4}, 5.0f / 3.0f},
    {"variance of one element is 0", var, {kNaN}, 0.0f},
    {"variance of none is 0 / -1", var, {}, -0.0f},
    {"variance of a constant is 0", var, {0.1f, 0.1f, 0.1f}, 0.0f},
    {"peak of -3, 2 is 3", peak, {-3, 2}, 3.0f},
    {"peak of nothing, or of zeros, is +0", peak, {-0.0f, 0.0f, -0.0f}, 0.0f},
    {"a NaN is passed over", peak, {kNaN, -1}, 1.0f},
};

TEST(Reductions, WorkedValues) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.why);
    std::vector<float> x = c.x;
    EXPECT_SAME_FLOAT(c.want, c.fn(x));
  }
}

}  // namespace
}  // namespace qel::test

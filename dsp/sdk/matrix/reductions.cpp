// SPDX-License-Identifier: MIT
// Reductions of a real array or vector: sums, variance, absolute peak.
#include <utility>

#include "detail/blocks.hpp"
#include "detail/contract.hpp"
#include "detail/mac.hpp"
#include "vector.h"

using qel::detail::Block;

namespace {

// Calls op(x[k]) for k = 0..n-1 in ascending order, loading eight at a time;
// a single running value in op sees the same order as a plain loop.
template <typename Op>
[[gnu::always_inline]] inline void for_each_value(const qel_float* x, int n, Op op) {
  for (int g = n / 8; g > 0; --g) {
    auto b = Block<8, 1>::load(x);
    [&]<int... k>(std::integer_sequence<int, k...>) { (op(b[k]), ...); }
    (std::make_integer_sequence<int, 8>{});
  }
  for (int r = n % 8; r > 0; --r) op(*x++);
}

}  // namespace

extern "C" {

// Sum of x[offset..offset+len-1]. Each group of 8 is summed left to right into
// a subtotal that is then added to the one running sum; the len mod 8 leftovers
// are added to it one by one. The grouping fixes the rounding: 2^24, seven
// zeros, 1, 1, six zeros gives 2^24 + 2 where a plain sum gives 2^24.
qel_float qel_fl_sum(const qel_float* x, int offset, int len) {
  QEL_EXPECT(len >= 0, "len >= 0");
  QEL_EXPECT(len == 0 || x != nullptr, "x is not null");
  const qel_float* p = x + offset;
  qel_float sum = 0.0f;
  for (int g = len / 8; g > 0; --g) {
    auto v = Block<8, 1>::load(p);
    const qel_float group = ((((((v[0] + v[1]) + v[2]) + v[3]) + v[4]) + v[5]) + v[6]) + v[7];
    sum = sum + group;
  }
  for (int r = len % 8; r > 0; --r) sum = sum + *p++;
  return sum;
}

// qel_fl_sum(A->data, 0, A->dim).
qel_float qel_flt_vec_sum(const qel_flt_vec* A) {
  QEL_EXPECT(A != nullptr, "A is not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::has_arrays(A, A->dim), "A has arrays");
  return qel_fl_sum(A->data, 0, A->dim);
}

// qel_fl_sum(A->data, start, num); start and num are not checked against dim.
qel_float qel_flt_vec_sum_part(const qel_flt_vec* A, int start, int num) {
  QEL_EXPECT(A != nullptr, "A is not null");
  QEL_EXPECT(num >= 0, "num >= 0");
  QEL_EXPECT(qel::detail::has_arrays(A, num), "A has arrays");
  return qel_fl_sum(A->data, start, num);
}

// Two passes: avg = (plain left-to-right sum) / n, then
// sum of (x - avg)^2 in order, divided by n - 1. n = 1 gives 0 at once;
// n = 0 gives 0 / -1 = -0 (the second pass never touches the mean).
qel_float qel_flt_vec_var(const qel_flt_vec* A) {
  QEL_EXPECT(A != nullptr, "A is not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::has_arrays(A, A->dim), "A has arrays");
  const int n = A->dim;
  const qel_float* x = A->data;
  if (n == 1) return 0.0f;
  qel_float s = 0.0f;
  for_each_value(x, n, [&](qel_float v) { s = s + v; });
  const qel_float avg = s / static_cast<qel_float>(n);
  qel_float var = 0.0f;
  for_each_value(x, n, [&](qel_float v) {
    const qel_float diff = v - avg;
    var = qel::detail::mac(var, diff, diff);
  });
  return var / static_cast<qel_float>(n - 1);
}

// Largest |x[i]|, starting from +0: t = (x > 0) ? x : -x, taken when strictly
// above the peak so far, so NaNs are passed over and -0 never shows.
// t is formed as the sign-cleared x (one VABS): it differs from the rule's t
// only for +0 (+0, not -0) and in a NaN's sign, and neither passes peak < t
// since the peak never drops below +0.
qel_float qel_fl_abs_max(const qel_float* x, int len) {
  QEL_EXPECT(len >= 0, "len >= 0");
  QEL_EXPECT(len == 0 || x != nullptr, "x is not null");
  qel_float peak = 0.0f;
  for_each_value(x, len, [&](qel_float v) {
    const qel_float t = __builtin_fabsf(v);
    peak = (peak < t) ? t : peak;
  });
  return peak;
}

}  // extern "C"

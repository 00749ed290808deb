// SPDX-License-Identifier: MIT
// Element-wise minimum and maximum of real and complex vectors, floors, and
// compression above a threshold.
#include "detail/blocks.hpp"
#include "detail/contract.hpp"
#include "detail/elementwise.hpp"
#include "detail/mac.hpp"
#include "vector.h"

using qel::detail::map_grouped;

namespace {

constexpr int kSelectGroup = 8;
constexpr int kFloorGroup = 8;

// Ranks complex elements without a square root.
using qel::detail::cpx_power;

using qel::detail::Block;
using qel::detail::Lanes;

// C's element i = A's when a_wins(pow_a, pow_b), else B's; both parts always
// come from one source. Four elements per step, all loads before the stores,
// so C may be A or B; the rest one by one by the same rule. One comparison
// picks both parts.
template <typename Wins>
[[gnu::always_inline]] inline void select_by_power(const qel_cpx_vec* A, const qel_cpx_vec* B,
                                                   qel_cpx_vec* C, Wins a_wins) {
  const auto pick = [a_wins](qel_float ar, qel_float ai, qel_float br, qel_float bi, qel_float& re,
                             qel_float& im) {
    const bool take_a = a_wins(cpx_power(ar, ai), cpx_power(br, bi));
    re = take_a ? ar : br;
    im = take_a ? ai : bi;
  };
  const qel_float *are = A->re, *aim = A->im, *bre = B->re, *bim = B->im;
  qel_float *cre = C->re, *cim = C->im;
  for (int g = A->dim / 4; g > 0; --g) {
    // Inputs in s8-s23, results leave from s0-s7.
    Lanes<4> ar = Block<4, 2>::load(are), ai = Block<4, 3>::load(aim);
    Lanes<4> br = Block<4, 4>::load(bre), bi = Block<4, 5>::load(bim);
    Lanes<4> re, im;
    qel::detail::each_lane<4>([&](auto j) {
      pick(std::get<j>(ar), std::get<j>(ai), std::get<j>(br), std::get<j>(bi), std::get<j>(re),
           std::get<j>(im));
    });
    Block<4, 0>::store(cre, re);
    Block<4, 1>::store(cim, im);
  }
  for (int k = A->dim % 4; k > 0; --k) pick(*are++, *aim++, *bre++, *bim++, *cre++, *cim++);
}

}  // namespace

extern "C" {

// C = A where power(A) < power(B), else B: B wins ties (also of different
// phase) and NaN powers. Count A->dim; C may be A or B.
void qel_cpx_vec_min(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  QEL_EXPECT_ELEMENTWISE(A->dim);
  select_by_power(A, B, C, [](qel_float pa, qel_float pb) { return pa < pb; });
}

// C = A where power(A) > power(B), else B: B wins ties and NaN powers.
// Count A->dim; C may be A or B.
void qel_cpx_vec_max(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  QEL_EXPECT_ELEMENTWISE(A->dim);
  select_by_power(A, B, C, [](qel_float pa, qel_float pb) { return pa > pb; });
}

// C[i] = (A[i] < B[i]) ? A[i] : B[i]: B wins ties and NaNs. Count A->dim;
// C may be A or B.
void qel_flt_vec_min(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C) {
  QEL_EXPECT_ELEMENTWISE(A->dim);
  map_grouped<kSelectGroup>(
      A->dim, C->data, [](qel_float a, qel_float b) { return (a < b) ? a : b; }, A->data, B->data);
}

// C[i] = (A[i] > B[i]) ? A[i] : B[i]: B wins ties and NaNs. Count A->dim;
// C may be A or B.
void qel_flt_vec_max(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C) {
  QEL_EXPECT_ELEMENTWISE(A->dim);
  map_grouped<kSelectGroup>(
      A->dim, C->data, [](qel_float a, qel_float b) { return (a > b) ? a : b; }, A->data, B->data);
}

// B[i] = (A[i] > threshold) ? A[i] : threshold: the threshold wins ties
// (-0 under +0 gives +0) and NaN elements; a NaN threshold gives NaN
// everywhere. Count A->dim; B may be A.
void qel_flt_vec_max_value(const qel_flt_vec* A, qel_float threshold, qel_flt_vec* B) {
  QEL_EXPECT(A != nullptr && B != nullptr, "A and B are not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::have_arrays(A->dim, A, B), "A and B have arrays");
  QEL_EXPECT(qel::detail::is_each_or_apart(A->dim, B, A), "B is A or does not overlap it");
  map_grouped<kFloorGroup>(
      A->dim, B->data, [threshold](qel_float a) { return (a > threshold) ? a : threshold; },
      A->data);
}

// Where re^2 + im^2 < max_abs_value^2 (strictly), the element becomes
// max_abs_value + 0i, sign kept, phase lost; ties, NaN parts and a NaN bound
// leave it. The bound is squared once. Count A->dim.
void qel_cpx_vec_max_value(qel_cpx_vec* A, qel_float max_abs_value) {
  QEL_EXPECT(A != nullptr, "A is not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::has_arrays(A, A->dim), "A has arrays");
  QEL_EXPECT(qel::detail::floats_disjoint(A->re, A->im, A->dim), "the parts of A do not overlap");
  const qel_float t = max_abs_value * max_abs_value;
  qel_float *re = A->re, *im = A->im;
  for (int i = 0; i < A->dim; ++i) {
    if (cpx_power(re[i], im[i]) < t) {
      re[i] = max_abs_value;
      im[i] = 0.0f;
    }
  }
}

// Where A[i] > threshold (strictly): A[i] = threshold + (A[i] - threshold) * B[i],
// the excess scaled by the slope B[i]; B[i] is read only then. Ties and NaNs
// leave A[i]. Count A->dim.
void qel_flt_vec_smooth(qel_flt_vec* A, const qel_flt_vec* B, qel_float threshold) {
  QEL_EXPECT(A != nullptr && B != nullptr, "A and B are not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::have_arrays(A->dim, A, B), "A and B have arrays");
  QEL_EXPECT(qel::detail::same_or_apart(B->data, A->data, A->dim), "B is A or does not overlap it");
  qel_float* a = A->data;
  const qel_float* slope = B->data;
  for (int i = 0; i < A->dim; ++i) {
    if (a[i] > threshold) a[i] = threshold + (a[i] - threshold) * slope[i];
  }
}

}  // extern "C"

// SPDX-License-Identifier: MIT
// Element-wise minimum and maximum of real and complex vectors, floors, and
// compression above a threshold.
#include "detail/contract.hpp"
#include "detail/elementwise.hpp"
#include "detail/loops.hpp"
#include "detail/mac.hpp"
#include "vector.h"

using qel::detail::for_each_grouped;
using qel::detail::map_grouped;

namespace {

constexpr int kSelectGroup = 8;
constexpr int kFloorGroup = 8;

// Ranks complex elements without a square root.
using qel::detail::cpx_power;

// C's element i = A's when a_wins(pow_a, pow_b), else B's; both parts always
// come from one source. Every input of an element is read before C's element
// is written, so C may be A or B.
template <typename Wins>
[[gnu::always_inline]] inline void select_by_power(const qel_cpx_vec* A, const qel_cpx_vec* B,
                                                   qel_cpx_vec* C, Wins a_wins) {
  const qel_float *are = A->re, *aim = A->im, *bre = B->re, *bim = B->im;
  qel_float *cre = C->re, *cim = C->im;
  for_each_grouped<kSelectGroup>(A->dim, [&](int i) {
    const qel_float ar = are[i], ai = aim[i], br = bre[i], bi = bim[i];
    const bool take_a = a_wins(cpx_power(ar, ai), cpx_power(br, bi));
    cre[i] = take_a ? ar : br;
    cim[i] = take_a ? ai : bi;
  });
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

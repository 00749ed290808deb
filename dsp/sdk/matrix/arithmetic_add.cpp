// SPDX-License-Identifier: MIT
// Addition and subtraction of vectors and arrays, with a scalar floor or a
// per-element ceiling.
#include "detail/contract.hpp"
#include "detail/elementwise.hpp"
#include "vector.h"

using qel::detail::map_grouped;

namespace {

constexpr int kAddGroup = 8;    // sums, differences, floored sums
constexpr int kFloorGroup = 8;  // floors of one array

// The floor rule: v is replaced only when the floor is strictly greater, so a
// tie, a NaN value and a NaN floor all keep v (-0 stays -0 under +0).
inline qel_float floor_at(qel_float v, qel_float floor) { return (floor > v) ? floor : v; }

inline void subtract_arrays(const qel_float* a, const qel_float* b, qel_float* c, int len) {
  map_grouped<kAddGroup>(
      len, c, [](qel_float x, qel_float y) { return x - y; }, a, b);
}

}  // namespace

extern "C" {

// C[i] = A[i] + B[i]; count len; C may be A or B.
void qel_fl_add(const qel_float* A, const qel_float* B, qel_float* C, int len) {
  QEL_EXPECT(len >= 0, "len >= 0");
  QEL_EXPECT(len == 0 || (A != nullptr && B != nullptr && C != nullptr), "A, B and C are not null");
  QEL_EXPECT(qel::detail::is_each_or_apart(len, C, A, B), "C is A or B, or does not overlap them");
  const auto add = [](qel_float a, qel_float b) { return a + b; };
  map_grouped<kAddGroup, decltype(add), 4, 0>(len, C, add, A, B);
}

// C = A + B; count A->dim; C may be A or B.
void qel_flt_vec_add(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C) {
  QEL_EXPECT_ELEMENTWISE(A->dim);
  qel_fl_add(A->data, B->data, C->data, A->dim);
}

// C = A + B per part: the whole re array, then the whole im array (every
// element is independent, so the order of the parts changes nothing); count
// A->dim; C may be A or B.
void qel_cpx_vec_add(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  QEL_EXPECT_ELEMENTWISE(A->dim);
  qel_fl_add(A->re, B->re, C->re, A->dim);
  qel_fl_add(A->im, B->im, C->im, A->dim);
}

// A[i] += b; count A->dim.
void qel_flt_vec_add_flt(qel_flt_vec* A, qel_float b) {
  QEL_EXPECT(A != nullptr, "A is not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::has_arrays(A, A->dim), "A has arrays");
  map_grouped<kAddGroup>(
      A->dim, A->data, [b](qel_float a) { return a + b; }, A->data);
}

// C = A - B per part, the whole re array before the im array; count A->dim;
// C may be A or B.
void qel_cpx_vec_subtract(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  QEL_EXPECT_ELEMENTWISE(A->dim);
  subtract_arrays(A->re, B->re, C->re, A->dim);
  subtract_arrays(A->im, B->im, C->im, A->dim);
}

// C = A - B; count A->dim; C may be A or B.
void qel_flt_vec_subtract(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C) {
  QEL_EXPECT_ELEMENTWISE(A->dim);
  subtract_arrays(A->data, B->data, C->data, A->dim);
}

// s = A[i] + B[i]; C[i] = (m > s) ? m : s: ties, a NaN sum and a NaN m keep
// s. Count len; C may be A or B.
void qel_fl_add_max(const qel_float* A, const qel_float* B, qel_float* C, qel_float m, int len) {
  QEL_EXPECT(len >= 0, "len >= 0");
  QEL_EXPECT(len == 0 || (A != nullptr && B != nullptr && C != nullptr), "A, B and C are not null");
  QEL_EXPECT(qel::detail::is_each_or_apart(len, C, A, B), "C is A or B, or does not overlap them");
  map_grouped<kAddGroup>(
      len, C, [m](qel_float a, qel_float b) { return floor_at(a + b, m); }, A, B);
}

// C = A + B floored at min, as qel_fl_add_max; count A->dim.
void qel_flt_vec_add_max(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C,
                         qel_float min) {
  QEL_EXPECT_ELEMENTWISE(A->dim);
  qel_fl_add_max(A->data, B->data, C->data, min, A->dim);
}

// B[i] = (c > A[i]) ? c : A[i]: ties, a NaN element and a NaN c keep A[i].
// Count len; A is only read.
void qel_fl_max(const qel_float* A, qel_float* B, qel_float c, int len) {
  QEL_EXPECT(len >= 0, "len >= 0");
  QEL_EXPECT(len == 0 || (A != nullptr && B != nullptr), "A and B are not null");
  QEL_EXPECT(qel::detail::same_or_apart(B, A, len), "B is A or does not overlap it");
  map_grouped<kFloorGroup>(
      len, B, [c](qel_float a) { return floor_at(a, c); }, A);
}

// B[i] = A[i] - b, floored at min as qel_fl_max; count A->dim.
void qel_flt_vec_subtract_max(const qel_flt_vec* A, qel_float b, qel_flt_vec* B, qel_float min) {
  QEL_EXPECT(A != nullptr && B != nullptr, "A and B are not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::have_arrays(A->dim, A, B), "A and B have arrays");
  QEL_EXPECT(qel::detail::same_or_apart(B->data, A->data, A->dim), "B is A or does not overlap it");
  map_grouped<kFloorGroup>(
      A->dim, B->data, [b, min](qel_float a) { return floor_at(a - b, min); }, A->data);
}

// C[i] = alpha - A[i] is stored, then C[i] and B[i] are read again and C[i]
// lowered to B[i] when strictly greater: a tie, a NaN difference and a NaN
// ceiling keep the difference. A B sharing C's data therefore limits nothing;
// C may be A. Count A->dim.
void qel_flt_vec_subtract_min(const qel_flt_vec* A, const qel_flt_vec* B, qel_float alpha,
                              qel_flt_vec* C) {
  QEL_EXPECT_ELEMENTWISE(A->dim);
  const auto difference = [alpha](qel_float a) { return alpha - a; };
  if (B->data == C->data) {
    // The ceiling is the difference just stored: nothing is ever above it.
    map_grouped<8>(A->dim, C->data, difference, A->data);
  } else {
    map_grouped<8>(
        A->dim, C->data,
        [difference](qel_float a, qel_float ceiling) {
          const qel_float d = difference(a);
          return (d > ceiling) ? ceiling : d;
        },
        A->data, B->data);
  }
}

}  // extern "C"

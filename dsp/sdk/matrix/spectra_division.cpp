// SPDX-License-Identifier: MIT
// Element-wise division of spectra and gain vectors with guarded zero
// denominators.
//
// A denominator is zero when it compares equal to zero: +0 and -0, never a NaN
// or a subnormal. The grouped kernels guard it in two forms: inside a full group
// of four the zero becomes kEpsilon and the numerator is divided by it; in the
// n mod 4 tail the numerator is multiplied by 1e8 instead. The two are not the
// same computation (1.3f / kEpsilon = 130000000, 1.3f * 1e8f = 129999992), so a
// guarded result depends on whether its element sits in the tail.
#include "detail/blocks.hpp"
#include "vector.h"

namespace {

using qel::detail::Block;
using qel::detail::lanes;

constexpr qel_float kEpsilon = 1e-8f;       // the float nearest 1e-8
constexpr qel_float kInvEpsilon = 100000000.0f;  // 1e8, exact in single precision

// The guard is positive whatever the zero's sign: the result keeps the
// numerator's sign.
constexpr auto guarded = [](qel_float d) { return (d == 0.0f) ? kEpsilon : d; };

// a / d in the tail form of the guard.
constexpr auto tail_quotient = [](qel_float a, qel_float d) {
  return (d == 0.0f) ? a * kInvEpsilon : a / d;
};

// c[k] = a[k] / den(b[k]), guarded in the grouped and tail forms. All loads of
// a group come before its stores, so c may be a or b.
template <typename Den>
void guarded_quotients(const qel_float* a, const qel_float* b, qel_float* c, int n, Den den) {
  const auto quotient = [&](qel_float x, qel_float y) { return x / guarded(den(y)); };
  for (int g = n / 4; g > 0; --g) {
    auto x = Block<4, 0>::load(a), y = Block<4, 1>::load(b);
    Block<4, 0>::store(c, lanes<4>(quotient, x, y));
  }
  for (int k = n % 4; k > 0; --k) {
    const qel_float x = *a++;
    *c++ = tail_quotient(x, den(*b++));
  }
}

}  // namespace

extern "C" {

// C = A / (alpha + B). The zero test is on the sum: alpha = -B[k] gives +0 and
// is guarded. Count A->dim; C may be A or B.
void qel_flt_vec_ratio_flt(const qel_flt_vec* A, const qel_flt_vec* B, qel_float alpha,
                           qel_flt_vec* C) {
  guarded_quotients(A->data, B->data, C->data, A->dim,
                    [alpha](qel_float b) { return alpha + b; });
}

// C = A / B. Count A->dim; C may be A or B.
void qel_flt_vec_dot_division(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C) {
  guarded_quotients(A->data, B->data, C->data, A->dim, [](qel_float b) { return b; });
}

// C = A / B with one real denominator for both parts, guarded in the same form
// for both. In a group the four real parts are stored first, then the four
// imaginary parts, after all loads. Count A->dim; C may be A.
void qel_cpx_vec_dot_division_flt(const qel_cpx_vec* A, const qel_flt_vec* B, qel_cpx_vec* C) {
  const int n = A->dim;
  const qel_float *ar = A->re, *ai = A->im, *b = B->data;
  qel_float *cr = C->re, *ci = C->im;
  const auto over = [](qel_float x, qel_float d) { return x / d; };
  for (int g = n / 4; g > 0; --g) {
    auto xr = Block<4, 0>::load(ar), xi = Block<4, 1>::load(ai);
    auto d = Block<4, 2>::load(b);
    d = lanes<4>(guarded, d);
    Block<4, 0>::store(cr, lanes<4>(over, xr, d));
    Block<4, 1>::store(ci, lanes<4>(over, xi, d));
  }
  for (int k = n % 4; k > 0; --k) {
    const qel_float xr = *ar++, xi = *ai++, d = *b++;
    *cr++ = tail_quotient(xr, d);
    *ci++ = tail_quotient(xi, d);
  }
}

// C.re = A.re / B.re and C.im = A.im / B.im: part by part, not a complex
// division. Each zero part divides by kEpsilon on its own; no tail form here.
// Bin by bin, the real part read, divided and stored before the imaginary part.
// Count A->dim; C may be A or B.
void qel_cpx_vec_dot_division(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  const int n = A->dim;
  for (int k = 0; k < n; ++k) {
    C->re[k] = A->re[k] / guarded(B->re[k]);
    C->im[k] = A->im[k] / guarded(B->im[k]);
  }
}

// C[i] = A[i] / B[i], where a zero B[i] is first overwritten with kEpsilon in
// B itself: B is an output too. The write comes before A[i] is read, so with A
// the same array as B a zero gives kEpsilon / kEpsilon = 1. Count len; C may be
// A or B.
void qel_fl_division(const qel_float* A, qel_float* B, qel_float* C, int len) {
  for (int i = 0; i < len; ++i) {
    if (B[i] == 0.0f) B[i] = kEpsilon;
    C[i] = A[i] / B[i];
  }
}

}  // extern "C"

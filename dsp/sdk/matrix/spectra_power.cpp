// SPDX-License-Identifier: MIT
// Real measures of spectra: power, magnitude, power sums, the sum of products
// of two spectra, and a per-element power law.
#include "detail/blocks.hpp"
#include "detail/complex_math.hpp"
#include "vector.h"

namespace {

using qel::detail::Block;
using qel::detail::cpx_power;
using qel::detail::lanes;

// ((p0 + p1) + p2) + p3 of the next four bins, which it steps over. Bank picks
// the registers of its loads (see Block), so two calls in one loop step can
// load into distinct registers.
template <int Bank>
[[gnu::always_inline]] inline qel_float group_power(const qel_float*& re, const qel_float*& im) {
  auto x = Block<4, Bank>::load(re), y = Block<4, Bank + 1>::load(im);
  auto p = lanes<4>(cpx_power, x, y);
  return ((std::get<0>(p) + std::get<1>(p)) + std::get<2>(p)) + std::get<3>(p);
}

// The power sum over n bins from re/im: each full group of four is reduced to
// its own total, left to right, and that total added to the one running sum;
// the n mod 4 last powers are then added one by one. Two groups per loop step
// halve the loop's own instructions; every group still meets the sum in order.
qel_float power_sum(const qel_float* re, const qel_float* im, int n) {
  qel_float sum = 0.0f;
  const int groups = n / 4;
  for (int g = groups / 2; g > 0; --g) {
    sum = sum + group_power<0>(re, im);
    sum = sum + group_power<2>(re, im);
  }
  if (groups % 2 > 0) sum = sum + group_power<0>(re, im);
  for (int k = n % 4; k > 0; --k) sum = sum + cpx_power(*re++, *im++);
  return sum;
}

}  // namespace

extern "C" {

// B[k] = re*re + im*im. Count A->dim; B->data may be A->re or A->im (a group's
// loads come before its stores).
void qel_cpx_vec_power(const qel_cpx_vec* A, qel_flt_vec* B) {
  const int n = A->dim;
  const qel_float *re = A->re, *im = A->im;
  qel_float* b = B->data;
  for (int g = n / 4; g > 0; --g) {
    auto x = Block<4, 0>::load(re), y = Block<4, 1>::load(im);
    Block<4, 0>::store(b, lanes<4>(cpx_power, x, y));
  }
  for (int k = n % 4; k > 0; --k) *b++ = cpx_power(*re++, *im++);
}

// B[k] = qel_sqrtf(re*re + im*im): the plain root of the single-precision
// power, no rescaling, one qel_sqrtf call per bin in index order. Count A->dim;
// B->data may be A->re or A->im (a group's loads come before its roots).
void qel_cpx_vec_abs(const qel_cpx_vec* A, qel_flt_vec* B) {
  const int n = A->dim;
  const qel_float *re = A->re, *im = A->im;
  qel_float* b = B->data;
  for (int g = n / 4; g > 0; --g) {
    auto [x, y] = qel::detail::load_saved_pair(re, im);
    qel::detail::each_lane<4>(
        [&](auto j) { *b++ = qel_sqrtf(cpx_power(std::get<j>(x), std::get<j>(y))); });
  }
  for (int k = n % 4; k > 0; --k) *b++ = qel_sqrtf(cpx_power(*re++, *im++));
}

// Sum of re*re + im*im over all A->dim bins; groups of four summed left to
// right, each group total added to one running sum, the rest added one by one.
qel_float qel_cpx_vec_power_sum(const qel_cpx_vec* A) { return power_sum(A->re, A->im, A->dim); }

// As qel_cpx_vec_power_sum over bins start..start+num-1, the groups counted
// from start. A->dim is not read.
qel_float qel_cpx_vec_power_sum_part(const qel_cpx_vec* A, int start, int num) {
  return power_sum(A->re + start, A->im + start, num);
}

// *re + i*(*im) = sum over k of A[k]*B[k], no conjugate. Both outputs are set
// to +0 first (an empty A gives 0 + 0i) and hold the running sums, each bin's
// product formed in full and then added. Count A->dim.
void qel_cpx_vec_inner_product(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_float* re,
                               qel_float* im) {
  *im = 0.0f;
  *re = 0.0f;
  const int n = A->dim;
  for (int k = 0; k < n; ++k) {
    const qel_float ar = A->re[k], ai = A->im[k], br = B->re[k], bi = B->im[k];
    *re = *re + qel::detail::cpx_product_re(ar, ai, br, bi);
    *im = *im + qel::detail::cpx_product_im(ar, ai, br, bi);
  }
}

// A[j] = qel_powf(A[j], alpha * B[j]), one call per element in index order; a
// NaN result is stored as +0, infinities pass. Count A->dim; B may be A.
void qel_flt_vec_powf(qel_flt_vec* A, const qel_flt_vec* B, qel_float alpha) {
  const int n = A->dim;
  qel_float* a = A->data;
  const qel_float* b = B->data;
  for (int j = 0; j < n; ++j) {
    const qel_float t = qel_powf(a[j], alpha * b[j]);
    a[j] = (t != t) ? 0.0f : t;
  }
}

}  // extern "C"

// SPDX-License-Identifier: MIT
// Element-wise products of spectra: complex and conjugate products, the
// accumulated conjugate product, real weighting and products, conjugation.
#include <cstdint>
#include <cstring>

#include "detail/blocks.hpp"
#include "detail/complex_math.hpp"
#include "vector.h"

namespace {

using qel::detail::Block;
using qel::detail::lanes;

// C = f(A, B) bin by bin, G bins per step: a step loads all of its inputs
// before it stores anything, and a bin reads and writes only its own index, so
// C may be A or B. The n mod G last bins go one by one through the same formulas.
template <int G, typename Re, typename Im>
void complex_products(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C, int n, Re re,
                      Im im) {
  const qel_float *ar = A->re, *ai = A->im, *br = B->re, *bi = B->im;
  qel_float *cr = C->re, *ci = C->im;
  for (int g = n / G; g > 0; --g) {
    auto xr = Block<G, 0>::load(ar), xi = Block<G, 1>::load(ai);
    auto yr = Block<G, 2>::load(br), yi = Block<G, 3>::load(bi);
    Block<G, 0>::store(cr, lanes<G>(re, xr, xi, yr, yi));
    Block<G, 1>::store(ci, lanes<G>(im, xr, xi, yr, yi));
  }
  for (int k = n % G; k > 0; --k) {
    const qel_float xr = *ar++, xi = *ai++, yr = *br++, yi = *bi++;
    *cr++ = re(xr, xi, yr, yi);
    *ci++ = im(xr, xi, yr, yi);
  }
}

// c[k] = a[k] * b[k], four per step, loads before stores: c may be a or b.
void real_products(const qel_float* a, const qel_float* b, qel_float* c, int n) {
  const auto times = [](qel_float x, qel_float y) { return x * y; };
  for (int g = n / 4; g > 0; --g) {
    auto x = Block<4, 0>::load(a), y = Block<4, 1>::load(b);
    Block<4, 0>::store(c, lanes<4>(times, x, y));
  }
  for (int k = n % 4; k > 0; --k) *c++ = times(*a++, *b++);
}

}  // namespace

extern "C" {

// C = A * B: re = ar*br - ai*bi, im = ai*br + ar*bi. Count C->dim; C may be
// A or B (or both: squaring in place).
void qel_cpx_vec_dot_product(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  complex_products<2>(A, B, C, C->dim, qel::detail::cpx_product_re, qel::detail::cpx_product_im);
}

// C = A * conj(B): re = ar*br + ai*bi, im = ai*br - ar*bi (not conj(A)*B:
// swapping A and B negates im). Count C->dim; C may be A or B.
void qel_cpx_vec_dot_product_conj(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  complex_products<4>(A, B, C, C->dim, qel::detail::cpx_conj_product_re,
                      qel::detail::cpx_conj_product_im);
}

// C += A * conj(B): C.re = C.re + (ar*br + ai*bi), C.im = C.im + (ai*br - ar*bi);
// the product is one term added to C, not two added in turn. Count A->dim;
// C's old contents are the start; C may be A or B (a bin's inputs are all
// read before C is written).
void qel_cpx_vec_dot_product_maddc_conj(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  const int n = A->dim;
  const qel_float *ar = A->re, *ai = A->im, *br = B->re, *bi = B->im;
  qel_float *cr = C->re, *ci = C->im;
  for (int k = 0; k < n; ++k) {
    const qel_float xr = ar[k], xi = ai[k], yr = br[k], yi = bi[k];
    const qel_float p = qel::detail::cpx_conj_product_re(xr, xi, yr, yi);
    const qel_float q = qel::detail::cpx_conj_product_im(xr, xi, yr, yi);
    cr[k] = cr[k] + p;
    ci[k] = ci[k] + q;
  }
}

// C = A * b (a real gain per bin): the whole real pass C.re = A.re * b, then
// the whole imaginary pass C.im = A.im * b. Count C->dim; C may be A. The
// second pass reads b again, so B->data must not be C->re.
void qel_cpx_vec_dot_product_flt(const qel_cpx_vec* A, const qel_flt_vec* B, qel_cpx_vec* C) {
  const int n = C->dim;
  real_products(A->re, B->data, C->re, n);
  real_products(A->im, B->data, C->im, n);
}

// C[k] = A[k] * B[k]; count A->dim; C may be A or B.
void qel_flt_vec_dot_product(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C) {
  real_products(A->data, B->data, C->data, A->dim);
}

// B = conj(A): re copied bit for bit, im with its sign bit flipped. Done on the
// bit patterns, so it is exact for every input: +0 becomes -0, a NaN keeps its
// payload, and conjugating twice restores every bit. Count A->dim; B may be A.
void qel_cpx_vec_conj(const qel_cpx_vec* A, qel_cpx_vec* B) {
  constexpr uint32_t kSign = 0x80000000u;
  const int n = A->dim;
  for (int k = 0; k < n; ++k) {
    uint32_t re, im;
    std::memcpy(&re, A->re + k, sizeof re);
    std::memcpy(&im, A->im + k, sizeof im);
    im ^= kSign;
    std::memcpy(B->re + k, &re, sizeof re);
    std::memcpy(B->im + k, &im, sizeof im);
  }
}

}  // extern "C"

// SPDX-License-Identifier: MIT
// Scaling by a scalar, a per-element gain or a gain ramp, and the affine
// updates A + B*scale and A*scale + B.
#include "detail/elementwise.hpp"
#include "detail/mac.hpp"
#include "vector.h"

using qel::detail::mac;
using qel::detail::map_grouped;

extern "C" {

// y[i] = x[i] * gain; count len; y may be x. The one kernel behind every
// scalar scaling below.
void qel_fl_mul_scale(qel_float* y, const qel_float* x, qel_float gain, int len) {
  map_grouped<8>(
      len, y, [gain](qel_float v) { return v * gain; }, x);
}

// A.re *= scale over the whole array, then A.im; count A->dim.
void qel_cpx_vec_scale(qel_cpx_vec* A, qel_float scale) {
  qel_fl_mul_scale(A->re, A->re, scale, A->dim);
  qel_fl_mul_scale(A->im, A->im, scale, A->dim);
}

// B = A * scale, whole re then whole im; count A->dim (B's dim untouched);
// B may be A, which is then the in-place form.
void qel_cpx_vec_scale2(const qel_cpx_vec* A, qel_float scale, qel_cpx_vec* B) {
  qel_fl_mul_scale(B->re, A->re, scale, A->dim);
  qel_fl_mul_scale(B->im, A->im, scale, A->dim);
}

// A *= scale; count A->dim.
void qel_flt_vec_scale(qel_flt_vec* A, qel_float scale) {
  qel_fl_mul_scale(A->data, A->data, scale, A->dim);
}

// B = A * scale; count A->dim (B's dim untouched); B may be A.
void qel_flt_vec_scale2(const qel_flt_vec* A, qel_float scale, qel_flt_vec* B) {
  qel_fl_mul_scale(B->data, A->data, scale, A->dim);
}

// A[i] *= v_scale[i]; count A->dim; v_scale only read.
void qel_flt_vec_pairwise_scale(qel_flt_vec* A, const qel_flt_vec* v_scale) {
  qel_float* a = A->data;
  const qel_float* g = v_scale->data;
  for (int i = 0; i < A->dim; ++i) a[i] = a[i] * g[i];
}

// A.re[i] += B.re[i] * scale, then A.im[i] += B.im[i] * scale, element by
// element; count A->dim; B may be A (each part becomes a + a*scale).
void qel_cpx_vec_pairwise_bias(qel_cpx_vec* A, const qel_cpx_vec* B, qel_float scale) {
  for (int i = 0; i < A->dim; ++i) {
    A->re[i] = mac(A->re[i], B->re[i], scale);
    A->im[i] = mac(A->im[i], B->im[i], scale);
  }
}

// A[i] += B[i] * scale; count A->dim; B may be A (a + a*scale).
void qel_flt_vec_pairwise_bias(qel_flt_vec* A, const qel_flt_vec* B, qel_float scale) {
  map_grouped<8>(
      A->dim, A->data, [scale](qel_float a, qel_float b) { return mac(a, b, scale); }, A->data,
      B->data);
}

// A.re[i] = A.re[i]*scale + B.re[i], then the same for im; both inputs of a
// part are read before it is stored, so B = A gives a*scale + a. Count A->dim.
void qel_cpx_vec_scale_add(qel_cpx_vec* A, qel_float scale, const qel_cpx_vec* B) {
  for (int i = 0; i < A->dim; ++i) {
    const qel_float re = A->re[i] * scale + B->re[i];
    A->re[i] = re;
    const qel_float im = A->im[i] * scale + B->im[i];
    A->im[i] = im;
  }
}

// A[i] = A[i]*scale is stored first, then A[i] += B[i]; B is read after that
// store, so B = A gives 2*(a*scale), unlike the complex form. Count A->dim.
void qel_flt_vec_scale_add(qel_flt_vec* A, qel_float scale, const qel_flt_vec* B) {
  qel_float* a = A->data;
  const qel_float* b = B->data;
  for (int i = 0; i < A->dim; ++i) {
    a[i] = a[i] * scale;
    a[i] = a[i] + b[i];
  }
}

// y[i] = x[i] * g, then g += step: the gain is a running single-precision sum,
// not gain + i*step, and the last increment is discarded. Count len; y may be x.
void qel_fl_mul_step(qel_float* y, const qel_float* x, qel_float gain, qel_float step, int len) {
  qel_float g = gain;
  for (int i = 0; i < len; ++i) {
    y[i] = x[i] * g;
    g = g + step;
  }
}

}  // extern "C"

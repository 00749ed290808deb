// SPDX-License-Identifier: MIT
#include "ref/arithmetic_ref.h"

namespace qel::ref {

// ---- Scaling and affine updates ----

void fl_mul_scale(float* y, const float* x, float gain, int len) {
  for (int i = 0; i < len; ++i) y[i] = x[i] * gain;
}

// The vector forms forward to the kernel: whole re, then whole im.
void cpx_vec_scale(qel_cpx_vec* A, float scale) { cpx_vec_scale2(A, scale, A); }

void cpx_vec_scale2(const qel_cpx_vec* A, float scale, qel_cpx_vec* B) {
  fl_mul_scale(B->re, A->re, scale, A->dim);
  fl_mul_scale(B->im, A->im, scale, A->dim);
}

void flt_vec_scale(qel_flt_vec* A, float scale) { fl_mul_scale(A->data, A->data, scale, A->dim); }

void flt_vec_scale2(const qel_flt_vec* A, float scale, qel_flt_vec* B) {
  fl_mul_scale(B->data, A->data, scale, A->dim);
}

void flt_vec_pairwise_scale(qel_flt_vec* A, const qel_flt_vec* v_scale) {
  for (int i = 0; i < A->dim; ++i) A->data[i] = A->data[i] * v_scale->data[i];
}

void cpx_vec_pairwise_bias(qel_cpx_vec* A, const qel_cpx_vec* B, float scale) {
  for (int i = 0; i < A->dim; ++i) {
    A->re[i] = A->re[i] + B->re[i] * scale;
    A->im[i] = A->im[i] + B->im[i] * scale;
  }
}

void flt_vec_pairwise_bias(qel_flt_vec* A, const qel_flt_vec* B, float scale) {
  for (int i = 0; i < A->dim; ++i) A->data[i] = A->data[i] + B->data[i] * scale;
}

void cpx_vec_scale_add(qel_cpx_vec* A, float scale, const qel_cpx_vec* B) {
  for (int i = 0; i < A->dim; ++i) {
    A->re[i] = A->re[i] * scale + B->re[i];
    A->im[i] = A->im[i] * scale + B->im[i];
  }
}

void flt_vec_scale_add(qel_flt_vec* A, float scale, const qel_flt_vec* B) {
  for (int i = 0; i < A->dim; ++i) {
    A->data[i] = A->data[i] * scale;  // stored before B is read
    A->data[i] = A->data[i] + B->data[i];
  }
}

void fl_mul_step(float* y, const float* x, float gain, float step, int len) {
  float g = gain;
  for (int i = 0; i < len; ++i) {
    y[i] = x[i] * g;
    g = g + step;
  }
}

// ---- Addition and subtraction with floors ----

namespace {
// Raised to the floor only when the floor is strictly greater.
float floored(float v, float floor) { return (floor > v) ? floor : v; }
}  // namespace

void fl_add(const float* A, const float* B, float* C, int len) {
  for (int i = 0; i < len; ++i) C[i] = A[i] + B[i];
}

void flt_vec_add(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C) {
  fl_add(A->data, B->data, C->data, A->dim);
}

void cpx_vec_add(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  fl_add(A->re, B->re, C->re, A->dim);
  fl_add(A->im, B->im, C->im, A->dim);
}

void flt_vec_add_flt(qel_flt_vec* A, float b) {
  for (int i = 0; i < A->dim; ++i) A->data[i] = A->data[i] + b;
}

void cpx_vec_subtract(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  for (int i = 0; i < A->dim; ++i) C->re[i] = A->re[i] - B->re[i];
  for (int i = 0; i < A->dim; ++i) C->im[i] = A->im[i] - B->im[i];
}

void flt_vec_subtract(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C) {
  for (int i = 0; i < A->dim; ++i) C->data[i] = A->data[i] - B->data[i];
}

void fl_add_max(const float* A, const float* B, float* C, float m, int len) {
  for (int i = 0; i < len; ++i) C[i] = floored(A[i] + B[i], m);
}

void flt_vec_add_max(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C, float min) {
  fl_add_max(A->data, B->data, C->data, min, A->dim);
}

void fl_max(const float* A, float* B, float c, int len) {
  for (int i = 0; i < len; ++i) B[i] = floored(A[i], c);
}

void flt_vec_subtract_max(const qel_flt_vec* A, float b, qel_flt_vec* B, float min) {
  for (int i = 0; i < A->dim; ++i) B->data[i] = floored(A->data[i] - b, min);
}

void flt_vec_subtract_min(const qel_flt_vec* A, const qel_flt_vec* B, float alpha, qel_flt_vec* C) {
  for (int i = 0; i < A->dim; ++i) {
    C->data[i] = alpha - A->data[i];
    if (C->data[i] > B->data[i]) C->data[i] = B->data[i];
  }
}

// ---- Minimum, maximum and clipping ----

namespace {
// C's element i is A's whole element when a_wins, else B's.
template <typename Wins>
void select(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C, Wins a_wins) {
  for (int i = 0; i < A->dim; ++i) {
    const float ar = A->re[i], ai = A->im[i], br = B->re[i], bi = B->im[i];
    const bool take_a = a_wins(ar * ar + ai * ai, br * br + bi * bi);
    C->re[i] = take_a ? ar : br;
    C->im[i] = take_a ? ai : bi;
  }
}
}  // namespace

void cpx_vec_min(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  select(A, B, C, [](float pow_a, float pow_b) { return pow_a < pow_b; });
}

void cpx_vec_max(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  select(A, B, C, [](float pow_a, float pow_b) { return pow_a > pow_b; });
}

void flt_vec_min(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C) {
  for (int i = 0; i < A->dim; ++i) C->data[i] = (A->data[i] < B->data[i]) ? A->data[i] : B->data[i];
}

void flt_vec_max(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C) {
  for (int i = 0; i < A->dim; ++i) C->data[i] = (A->data[i] > B->data[i]) ? A->data[i] : B->data[i];
}

void flt_vec_max_value(const qel_flt_vec* A, float threshold, qel_flt_vec* B) {
  for (int i = 0; i < A->dim; ++i) B->data[i] = (A->data[i] > threshold) ? A->data[i] : threshold;
}

void cpx_vec_max_value(qel_cpx_vec* A, float max_abs_value) {
  const float t = max_abs_value * max_abs_value;
  for (int i = 0; i < A->dim; ++i) {
    const float p = A->re[i] * A->re[i] + A->im[i] * A->im[i];
    if (p < t) {
      A->re[i] = max_abs_value;
      A->im[i] = 0.0f;
    }
  }
}

void flt_vec_smooth(qel_flt_vec* A, const qel_flt_vec* B, float threshold) {
  for (int i = 0; i < A->dim; ++i) {
    if (A->data[i] > threshold) A->data[i] = threshold + (A->data[i] - threshold) * B->data[i];
  }
}

}  // namespace qel::ref

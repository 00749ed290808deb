// SPDX-License-Identifier: MIT
#include "ref/spectra_ref.h"

#include <cstdint>
#include <cstring>

namespace qel::ref {
namespace {

float power(float re, float im) { return re * re + im * im; }

// x / d with the zero guard that element k of n gets.
float guarded_quotient(float x, float d, int k, int n) {
  if (d == 0.0f) return (k < n / 4 * 4) ? x / 1e-8f : x * 1e8f;
  return x / d;
}

}  // namespace

void cpx_vec_dot_product(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  for (int k = 0; k < C->dim; ++k) {
    const float ar = A->re[k], ai = A->im[k], br = B->re[k], bi = B->im[k];
    C->re[k] = ar * br - ai * bi;
    C->im[k] = ai * br + ar * bi;
  }
}

void cpx_conj_product(const float* ar, const float* ai, const float* br, const float* bi, float* cr,
                      float* ci, int n) {
  for (int k = 0; k < n; ++k) {
    const float xr = ar[k], xi = ai[k], yr = br[k], yi = bi[k];
    cr[k] = xr * yr + xi * yi;
    ci[k] = xi * yr - xr * yi;
  }
}

void cpx_vec_dot_product_conj(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  cpx_conj_product(A->re, A->im, B->re, B->im, C->re, C->im, C->dim);
}

void cpx_vec_dot_product_maddc_conj(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  for (int k = 0; k < A->dim; ++k) {
    const float ar = A->re[k], ai = A->im[k], br = B->re[k], bi = B->im[k];
    const float p = ar * br + ai * bi;
    const float q = ai * br - ar * bi;
    C->re[k] = C->re[k] + p;
    C->im[k] = C->im[k] + q;
  }
}

void cpx_vec_dot_product_flt(const qel_cpx_vec* A, const qel_flt_vec* B, qel_cpx_vec* C) {
  for (int k = 0; k < C->dim; ++k) C->re[k] = A->re[k] * B->data[k];
  for (int k = 0; k < C->dim; ++k) C->im[k] = A->im[k] * B->data[k];
}

void flt_vec_dot_product(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C) {
  for (int k = 0; k < A->dim; ++k) C->data[k] = A->data[k] * B->data[k];
}

void cpx_vec_conj(const qel_cpx_vec* A, qel_cpx_vec* B) {
  for (int k = 0; k < A->dim; ++k) {
    uint32_t u;
    std::memcpy(&u, &A->im[k], 4);
    u ^= 0x80000000u;
    std::memcpy(&B->re[k], &A->re[k], 4);
    std::memcpy(&B->im[k], &u, 4);
  }
}

void flt_vec_ratio_flt(const qel_flt_vec* A, const qel_flt_vec* B, float alpha, qel_flt_vec* C) {
  const int n = A->dim;
  for (int k = 0; k < n; ++k) C->data[k] = guarded_quotient(A->data[k], alpha + B->data[k], k, n);
}

void flt_vec_dot_division(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C) {
  const int n = A->dim;
  for (int k = 0; k < n; ++k) C->data[k] = guarded_quotient(A->data[k], B->data[k], k, n);
}

void cpx_division_flt(const float* ar, const float* ai, const float* b, float* cr, float* ci,
                      int n) {
  for (int k = 0; k < n; ++k) {
    const float re = ar[k], im = ai[k], d = b[k];
    cr[k] = guarded_quotient(re, d, k, n);
    ci[k] = guarded_quotient(im, d, k, n);
  }
}

void cpx_vec_dot_division_flt(const qel_cpx_vec* A, const qel_flt_vec* B, qel_cpx_vec* C) {
  cpx_division_flt(A->re, A->im, B->data, C->re, C->im, A->dim);
}

void cpx_vec_dot_division(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  for (int k = 0; k < A->dim; ++k) {
    C->re[k] = A->re[k] / (B->re[k] == 0.0f ? 1e-8f : B->re[k]);
    C->im[k] = A->im[k] / (B->im[k] == 0.0f ? 1e-8f : B->im[k]);
  }
}

void fl_division(const float* A, float* B, float* C, int len) {
  for (int k = 0; k < len; ++k) {
    if (B[k] == 0.0f) B[k] = 1e-8f;
    C[k] = A[k] / B[k];
  }
}

void power(const float* re, const float* im, float* out, int n) {
  for (int k = 0; k < n; ++k) out[k] = power(re[k], im[k]);
}

void cpx_vec_power(const qel_cpx_vec* A, qel_flt_vec* B) { power(A->re, A->im, B->data, A->dim); }

void cpx_vec_abs(const qel_cpx_vec* A, qel_flt_vec* B) {
  for (int k = 0; k < A->dim; ++k) B->data[k] = qel_sqrtf(power(A->re[k], A->im[k]));
}

float power_sum(const float* re, const float* im, int n) {
  float sum = 0.0f;
  int k = 0;
  for (; k + 4 <= n; k += 4) {
    float group = power(re[k], im[k]);
    for (int j = 1; j < 4; ++j) group = group + power(re[k + j], im[k + j]);
    sum = sum + group;
  }
  for (; k < n; ++k) sum = sum + power(re[k], im[k]);
  return sum;
}

float cpx_vec_power_sum(const qel_cpx_vec* A) { return power_sum(A->re, A->im, A->dim); }

float cpx_vec_power_sum_part(const qel_cpx_vec* A, int start, int num) {
  return power_sum(A->re + start, A->im + start, num);
}

void cpx_vec_inner_product(const qel_cpx_vec* A, const qel_cpx_vec* B, float* re, float* im) {
  *im = 0.0f;
  *re = 0.0f;
  for (int k = 0; k < A->dim; ++k) {
    *re = *re + (A->re[k] * B->re[k] - A->im[k] * B->im[k]);
    *im = *im + (A->im[k] * B->re[k] + A->re[k] * B->im[k]);
  }
}

void flt_vec_powf(qel_flt_vec* A, const qel_flt_vec* B, float alpha) {
  for (int k = 0; k < A->dim; ++k) {
    const float t = qel_powf(A->data[k], alpha * B->data[k]);
    A->data[k] = (t != t) ? 0.0f : t;
  }
}

}  // namespace qel::ref

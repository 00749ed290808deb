// SPDX-License-Identifier: MIT
#include "ref/spectra_ref.h"

#include <cstdint>
#include <cstring>

namespace qel::ref {

void cpx_product(const float* ar, const float* ai, const float* br, const float* bi, float* cr,
                 float* ci, int n) {
  for (int k = 0; k < n; ++k) {
    const float xr = ar[k], xi = ai[k], yr = br[k], yi = bi[k];
    cr[k] = xr * yr - xi * yi;
    ci[k] = xi * yr + xr * yi;
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

void cpx_maddc_conj(const float* ar, const float* ai, const float* br, const float* bi, float* cr,
                    float* ci, int n) {
  for (int k = 0; k < n; ++k) {
    const float xr = ar[k], xi = ai[k], yr = br[k], yi = bi[k];
    const float p = xr * yr + xi * yi;
    const float q = xi * yr - xr * yi;
    cr[k] = cr[k] + p;
    ci[k] = ci[k] + q;
  }
}

void real_product(const float* a, const float* b, float* c, int n) {
  for (int k = 0; k < n; ++k) c[k] = a[k] * b[k];
}

void cpx_conj(const float* ar, const float* ai, float* br, float* bi, int n) {
  for (int k = 0; k < n; ++k) {
    uint32_t u;
    std::memcpy(&u, &ai[k], 4);
    u ^= 0x80000000u;
    std::memcpy(&br[k], &ar[k], 4);
    std::memcpy(&bi[k], &u, 4);
  }
}

namespace {

// x / d with the zero guard that element k of n gets.
float guarded_quotient(float x, float d, int k, int n) {
  const bool grouped = k < n / 4 * 4;
  if (d == 0.0f) return grouped ? x / 1e-8f : x * 1e8f;
  return x / d;
}

}  // namespace

void ratio(const float* a, const float* b, float alpha, float* c, int n) {
  for (int k = 0; k < n; ++k) c[k] = guarded_quotient(a[k], alpha + b[k], k, n);
}

void division(const float* a, const float* b, float* c, int n) {
  for (int k = 0; k < n; ++k) c[k] = guarded_quotient(a[k], b[k], k, n);
}

void cpx_division_flt(const float* ar, const float* ai, const float* b, float* cr, float* ci,
                      int n) {
  for (int k = 0; k < n; ++k) {
    const float xr = ar[k], xi = ai[k], d = b[k];
    cr[k] = guarded_quotient(xr, d, k, n);
    ci[k] = guarded_quotient(xi, d, k, n);
  }
}

void cpx_division(const float* ar, const float* ai, const float* br, const float* bi, float* cr,
                  float* ci, int n) {
  for (int k = 0; k < n; ++k) {
    cr[k] = ar[k] / (br[k] == 0.0f ? 1e-8f : br[k]);
    ci[k] = ai[k] / (bi[k] == 0.0f ? 1e-8f : bi[k]);
  }
}

void fl_division(const float* a, float* b, float* c, int n) {
  for (int k = 0; k < n; ++k) {
    if (b[k] == 0.0f) b[k] = 1e-8f;
    c[k] = a[k] / b[k];
  }
}

void power(const float* re, const float* im, float* out, int n) {
  for (int k = 0; k < n; ++k) {
    const float x = re[k], y = im[k];
    out[k] = x * x + y * y;
  }
}

void magnitude(const float* re, const float* im, float* out, int n) {
  for (int k = 0; k < n; ++k) {
    const float x = re[k], y = im[k];
    out[k] = qel_sqrtf(x * x + y * y);
  }
}

float power_sum(const float* re, const float* im, int n) {
  float sum = 0.0f;
  int k = 0;
  for (; k + 4 <= n; k += 4) {
    float group = re[k] * re[k] + im[k] * im[k];
    for (int j = 1; j < 4; ++j) group = group + (re[k + j] * re[k + j] + im[k + j] * im[k + j]);
    sum = sum + group;
  }
  for (; k < n; ++k) sum = sum + (re[k] * re[k] + im[k] * im[k]);
  return sum;
}

void inner_product(const float* ar, const float* ai, const float* br, const float* bi, float* re,
                   float* im, int n) {
  *im = 0.0f;
  *re = 0.0f;
  for (int k = 0; k < n; ++k) {
    *re = *re + (ar[k] * br[k] - ai[k] * bi[k]);
    *im = *im + (ai[k] * br[k] + ar[k] * bi[k]);
  }
}

void powf_law(float* a, const float* b, float alpha, int n) {
  for (int k = 0; k < n; ++k) {
    const float t = qel_powf(a[k], alpha * b[k]);
    a[k] = (t != t) ? 0.0f : t;
  }
}

}  // namespace qel::ref

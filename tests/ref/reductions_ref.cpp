// SPDX-License-Identifier: MIT
#include "ref/reductions_ref.h"

namespace qel::ref {

float fl_sum(const float* x, int offset, int len) {
  const float* ptr = x + offset;
  float sum = 0.0f;
  const int len_div8 = len / 8;
  const int len_rem = len % 8;
  for (int g = 0; g < len_div8; ++g) {
    float subtotal = ptr[8 * g];
    for (int k = 1; k < 8; ++k) subtotal = subtotal + ptr[8 * g + k];
    sum = sum + subtotal;
  }
  for (int k = 0; k < len_rem; ++k) sum = sum + ptr[8 * len_div8 + k];
  return sum;
}

float flt_vec_sum(const qel_flt_vec* A) { return fl_sum(A->data, 0, A->dim); }

float flt_vec_sum_part(const qel_flt_vec* A, int start, int num) {
  return fl_sum(A->data, start, num);
}

float flt_vec_var(const qel_flt_vec* A) {
  const int n = A->dim;
  if (n == 1) return 0.0f;
  float s = 0.0f;
  for (int k = 0; k < n; ++k) s = s + A->data[k];
  const float avg = s / static_cast<float>(n);
  float var = 0.0f;
  for (int k = 0; k < n; ++k) {
    const float diff = A->data[k] - avg;
    var = var + diff * diff;
  }
  return var / static_cast<float>(n - 1);
}

float fl_abs_max(const float* x, int len) {
  float maxf = 0.0f;
  for (int k = 0; k < len; ++k) {
    const float t = (x[k] > 0.0f) ? x[k] : -x[k];
    if (maxf < t) maxf = t;
  }
  return maxf;
}

}  // namespace qel::ref

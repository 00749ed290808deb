// SPDX-License-Identifier: MIT
#include "ref/containers_ref.h"

namespace qel::ref {

void cpx_vec_set(qel_cpx_vec* A, float a, float b) {
  for (int k = 0; k < A->dim; ++k) {
    A->re[k] = a;
    A->im[k] = b;
  }
}

void flt_vec_set(qel_flt_vec* A, float a) {
  for (int k = 0; k < A->dim; ++k) A->data[k] = a;
}

void short_vec_set(int16_t* data, int16_t a, int len) {
  for (int k = 0; k < len; ++k) data[k] = a;
}

void flt_vec_copy(const qel_flt_vec* A, qel_flt_vec* B) {
  for (int k = 0; k < B->dim; ++k) B->data[k] = A->data[k];
}

void cpx_vec_copy(const qel_cpx_vec* A, qel_cpx_vec* B) {
  for (int k = 0; k < B->dim; ++k) B->re[k] = A->re[k];
  for (int k = 0; k < B->dim; ++k) B->im[k] = A->im[k];
}

// A range copies end - start + 1 elements, and nothing when end <= start.
void flt_vec_copy_subvec(const qel_flt_vec* A, int start, int end, qel_flt_vec* B) {
  for (int k = start; end > start && k <= end; ++k) B->data[k] = A->data[k];
}

void cpx_vec_copy_subvec(const qel_cpx_vec* A, int start, int end, qel_cpx_vec* B) {
  for (int k = start; end > start && k <= end; ++k) B->re[k] = A->re[k];
  for (int k = start; end > start && k <= end; ++k) B->im[k] = A->im[k];
}

}  // namespace qel::ref

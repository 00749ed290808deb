// SPDX-License-Identifier: MIT
// Plain references for fills and copies: element loops, same arguments as the
// library's.
#pragma once

#include "vector.h"

namespace qel::ref {

void cpx_vec_set(qel_cpx_vec* A, float a, float b);
void flt_vec_set(qel_flt_vec* A, float a);
void short_vec_set(int16_t* data, int16_t a, int len);
void flt_vec_copy(const qel_flt_vec* A, qel_flt_vec* B);  // count B->dim
void cpx_vec_copy(const qel_cpx_vec* A, qel_cpx_vec* B);  // count B->dim
void flt_vec_copy_subvec(const qel_flt_vec* A, int start, int end, qel_flt_vec* B);
void cpx_vec_copy_subvec(const qel_cpx_vec* A, int start, int end, qel_cpx_vec* B);

}  // namespace qel::ref

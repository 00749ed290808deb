// SPDX-License-Identifier: MIT
// Plain references for scaling, addition with floors, minimum, maximum and
// clipping: one obvious loop per function, same arguments as the library's.
#pragma once

#include "vector.h"

namespace qel::ref {

void fl_mul_scale(float* y, const float* x, float gain, int len);
void cpx_vec_scale(qel_cpx_vec* A, float scale);
void cpx_vec_scale2(const qel_cpx_vec* A, float scale, qel_cpx_vec* B);
void flt_vec_scale(qel_flt_vec* A, float scale);
void flt_vec_scale2(const qel_flt_vec* A, float scale, qel_flt_vec* B);
void flt_vec_pairwise_scale(qel_flt_vec* A, const qel_flt_vec* v_scale);
void cpx_vec_pairwise_bias(qel_cpx_vec* A, const qel_cpx_vec* B, float scale);
void flt_vec_pairwise_bias(qel_flt_vec* A, const qel_flt_vec* B, float scale);
void cpx_vec_scale_add(qel_cpx_vec* A, float scale, const qel_cpx_vec* B);
void flt_vec_scale_add(qel_flt_vec* A, float scale, const qel_flt_vec* B);
void fl_mul_step(float* y, const float* x, float gain, float step, int len);

void fl_add(const float* A, const float* B, float* C, int len);
void flt_vec_add(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C);
void cpx_vec_add(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C);
void flt_vec_add_flt(qel_flt_vec* A, float b);
void cpx_vec_subtract(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C);
void flt_vec_subtract(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C);
void fl_add_max(const float* A, const float* B, float* C, float m, int len);
void flt_vec_add_max(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C, float min);
void fl_max(const float* A, float* B, float c, int len);
void flt_vec_subtract_max(const qel_flt_vec* A, float b, qel_flt_vec* B, float min);
void flt_vec_subtract_min(const qel_flt_vec* A, const qel_flt_vec* B, float alpha, qel_flt_vec* C);

void cpx_vec_min(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C);
void cpx_vec_max(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C);
void flt_vec_min(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C);
void flt_vec_max(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C);
void flt_vec_max_value(const qel_flt_vec* A, float threshold, qel_flt_vec* B);
void cpx_vec_max_value(qel_cpx_vec* A, float max_abs_value);
void flt_vec_smooth(qel_flt_vec* A, const qel_flt_vec* B, float threshold);

}  // namespace qel::ref

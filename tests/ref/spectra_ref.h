// SPDX-License-Identifier: MIT
// Plain references for products, divisions and powers: one obvious loop per
// function, same arguments as the library's.
#pragma once

#include "vector.h"

namespace qel::ref {

// Raw-array forms with an explicit count, which the record forms below use.
void cpx_conj_product(const float* ar, const float* ai, const float* br, const float* bi, float* cr,
                      float* ci, int n);
void cpx_division_flt(const float* ar, const float* ai, const float* b, float* cr, float* ci,
                      int n);
void power(const float* re, const float* im, float* out, int n);
float power_sum(const float* re, const float* im, int n);

void cpx_vec_dot_product(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C);
void cpx_vec_dot_product_conj(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C);
void cpx_vec_dot_product_maddc_conj(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C);
void cpx_vec_dot_product_flt(const qel_cpx_vec* A, const qel_flt_vec* B, qel_cpx_vec* C);
void flt_vec_dot_product(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C);
void cpx_vec_conj(const qel_cpx_vec* A, qel_cpx_vec* B);

// Elements below 4 * (n / 4) divide a zero denominator's numerator by 1e-8f,
// the others multiply it by 1e8f.
void flt_vec_ratio_flt(const qel_flt_vec* A, const qel_flt_vec* B, float alpha, qel_flt_vec* C);
void flt_vec_dot_division(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C);
void cpx_vec_dot_division_flt(const qel_cpx_vec* A, const qel_flt_vec* B, qel_cpx_vec* C);
void cpx_vec_dot_division(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C);
void fl_division(const float* A, float* B, float* C, int len);

void cpx_vec_power(const qel_cpx_vec* A, qel_flt_vec* B);
void cpx_vec_abs(const qel_cpx_vec* A, qel_flt_vec* B);  // one qel_sqrtf per element
float cpx_vec_power_sum(const qel_cpx_vec* A);
float cpx_vec_power_sum_part(const qel_cpx_vec* A, int start, int num);
void cpx_vec_inner_product(const qel_cpx_vec* A, const qel_cpx_vec* B, float* re, float* im);
void flt_vec_powf(qel_flt_vec* A, const qel_flt_vec* B, float alpha);  // one qel_powf each

}  // namespace qel::ref

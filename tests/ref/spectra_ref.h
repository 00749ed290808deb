// SPDX-License-Identifier: MIT
// Plain references for the spectra: one obvious loop per function, over raw
// arrays with an explicit count.
#pragma once

#include "vector.h"

namespace qel::ref {

void cpx_product(const float* ar, const float* ai, const float* br, const float* bi, float* cr,
                 float* ci, int n);
void cpx_conj_product(const float* ar, const float* ai, const float* br, const float* bi, float* cr,
                      float* ci, int n);
void cpx_maddc_conj(const float* ar, const float* ai, const float* br, const float* bi, float* cr,
                    float* ci, int n);
void real_product(const float* a, const float* b, float* c, int n);
void cpx_conj(const float* ar, const float* ai, float* br, float* bi, int n);

// Quotients with the position-dependent zero guard: elements below 4*(n/4)
// divide by 1e-8f, the others multiply by 1e8f.
void ratio(const float* a, const float* b, float alpha, float* c, int n);
void division(const float* a, const float* b, float* c, int n);
void cpx_division_flt(const float* ar, const float* ai, const float* b, float* cr, float* ci,
                      int n);
void cpx_division(const float* ar, const float* ai, const float* br, const float* bi, float* cr,
                  float* ci, int n);
void fl_division(const float* a, float* b, float* c, int n);

void power(const float* re, const float* im, float* out, int n);
// Calls qel_sqrtf once per element, in order.
void magnitude(const float* re, const float* im, float* out, int n);
float power_sum(const float* re, const float* im, int n);
void inner_product(const float* ar, const float* ai, const float* br, const float* bi, float* re,
                   float* im, int n);
// Calls qel_powf once per element, in order.
void powf_law(float* a, const float* b, float alpha, int n);

}  // namespace qel::ref

// SPDX-License-Identifier: MIT
// Plain references for sums, variance and peak.
#pragma once

#include "vector.h"

namespace qel::ref {

float fl_sum(const float* x, int offset, int len);
float flt_vec_sum(const qel_flt_vec* A);
float flt_vec_sum_part(const qel_flt_vec* A, int start, int num);
float flt_vec_var(const qel_flt_vec* A);
float fl_abs_max(const float* x, int len);

}  // namespace qel::ref

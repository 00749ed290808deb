// SPDX-License-Identifier: MIT
// Scaling by a scalar, a per-element gain or a gain ramp, and the affine
// updates A + B*scale and A*scale + B.
#include "detail/contract.hpp"
#include "detail/elementwise.hpp"
#include "detail/mac.hpp"
#include "vector.h"

using qel::detail::mac;
using qel::detail::map_grouped;

extern "C" {

// y[i] = x[i] * gain; count len; y may be x. The one kernel behind every
// scalar scaling below.
void qel_fl_mul_scale(qel_float* y, const qel_float* x, qel_float gain, int len) {
  QEL_EXPECT(len >= 0, "len >= 0");
  QEL_EXPECT(len == 0 || (y != nullptr && x != nullptr), "y and x are not null");
  QEL_EXPECT(qel::detail::is_each_or_apart(len, y, x), "y is x or does not overlap it");
  map_grouped<8>(
      len, y, [gain](qel_float v) { return v * gain; }, x);
}

// A.re *= scale over the whole array, then A.im; count A->dim.
void qel_cpx_vec_scale(qel_cpx_vec* A, qel_float scale) {
  QEL_EXPECT(A != nullptr, "A is not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::has_arrays(A, A->dim), "A has arrays");
  QEL_EXPECT(qel::detail::floats_disjoint(A->re, A->im, A->dim), "the parts of A do not overlap");
  qel_fl_mul_scale(A->re, A->re, scale, A->dim);
  qel_fl_mul_scale(A->im, A->im, scale, A->dim);
}

// B = A * scale, whole re then whole im; count A->dim (B's dim untouched);
// B may be A, which is then the in-place form.
void qel_cpx_vec_scale2(const qel_cpx_vec* A, qel_float scale, qel_cpx_vec* B) {
  QEL_EXPECT(A != nullptr && B != nullptr, "A and B are not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::have_arrays(A->dim, A, B), "A and B have arrays");
  QEL_EXPECT(qel::detail::is_each_or_apart(A->dim, B, A), "B is A or does not overlap it");
  qel_fl_mul_scale(B->re, A->re, scale, A->dim);
  qel_fl_mul_scale(B->im, A->im, scale, A->dim);
}

// A *= scale; count A->dim.
void qel_flt_vec_scale(qel_flt_vec* A, qel_float scale) {
  QEL_EXPECT(A != nullptr, "A is not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::has_arrays(A, A->dim), "A has arrays");
  qel_fl_mul_scale(A->data, A->data, scale, A->dim);
}

// B = A * scale; count A->dim (B's dim untouched); B may be A.
void qel_flt_vec_scale2(const qel_flt_vec* A, qel_float scale, qel_flt_vec* B) {
  QEL_EXPECT(A != nullptr && B != nullptr, "A and B are not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::have_arrays(A->dim, A, B), "A and B have arrays");
  QEL_EXPECT(qel::detail::is_each_or_apart(A->dim, B, A), "B is A or does not overlap it");
  qel_fl_mul_scale(B->data, A->data, scale, A->dim);
}

// A[i] *= v_scale[i]; count A->dim; v_scale only read.
void qel_flt_vec_pairwise_scale(qel_flt_vec* A, const qel_flt_vec* v_scale) {
  QEL_EXPECT(A != nullptr && v_scale != nullptr, "A and v_scale are not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::have_arrays(A->dim, A, v_scale), "A and v_scale have arrays");
  QEL_EXPECT(qel::detail::same_or_apart(v_scale->data, A->data, A->dim),
             "v_scale is A or does not overlap it");
  map_grouped<8>(
      A->dim, A->data, [](qel_float a, qel_float g) { return a * g; }, A->data, v_scale->data);
}

// A.re[i] += B.re[i] * scale and A.im[i] += B.im[i] * scale; count A->dim; B
// may be A (each part becomes a + a*scale). Every part of every element is
// independent, so the parts go as two grouped passes.
void qel_cpx_vec_pairwise_bias(qel_cpx_vec* A, const qel_cpx_vec* B, qel_float scale) {
  QEL_EXPECT(A != nullptr && B != nullptr, "A and B are not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::have_arrays(A->dim, A, B), "A and B have arrays");
  QEL_EXPECT(qel::detail::is_each_or_apart(A->dim, A, B), "B is A or does not overlap it");
  const auto bias = [scale](qel_float a, qel_float b) { return mac(a, b, scale); };
  map_grouped<8>(A->dim, A->re, bias, A->re, B->re);
  map_grouped<8>(A->dim, A->im, bias, A->im, B->im);
}

// A[i] += B[i] * scale; count A->dim; B may be A (a + a*scale).
void qel_flt_vec_pairwise_bias(qel_flt_vec* A, const qel_flt_vec* B, qel_float scale) {
  QEL_EXPECT(A != nullptr && B != nullptr, "A and B are not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::have_arrays(A->dim, A, B), "A and B have arrays");
  QEL_EXPECT(qel::detail::is_each_or_apart(A->dim, A, B), "B is A or does not overlap it");
  map_grouped<8>(
      A->dim, A->data, [scale](qel_float a, qel_float b) { return mac(a, b, scale); }, A->data,
      B->data);
}

// A.re[i] = A.re[i]*scale + B.re[i], and the same for im; both inputs of a
// part are read before it is stored, so B = A gives a*scale + a. Count A->dim.
void qel_cpx_vec_scale_add(qel_cpx_vec* A, qel_float scale, const qel_cpx_vec* B) {
  QEL_EXPECT(A != nullptr && B != nullptr, "A and B are not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::have_arrays(A->dim, A, B), "A and B have arrays");
  QEL_EXPECT(qel::detail::is_each_or_apart(A->dim, A, B), "B is A or does not overlap it");
  const auto scale_add = [scale](qel_float a, qel_float b) { return a * scale + b; };
  map_grouped<8>(A->dim, A->re, scale_add, A->re, B->re);
  map_grouped<8>(A->dim, A->im, scale_add, A->im, B->im);
}

// A[i] = A[i]*scale is stored first, then A[i] += B[i]; B is read after that
// store, so B = A gives 2*(a*scale), unlike the complex form. Count A->dim.
void qel_flt_vec_scale_add(qel_flt_vec* A, qel_float scale, const qel_flt_vec* B) {
  QEL_EXPECT(A != nullptr && B != nullptr, "A and B are not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::have_arrays(A->dim, A, B), "A and B have arrays");
  QEL_EXPECT(qel::detail::is_each_or_apart(A->dim, A, B), "B is A or does not overlap it");
  // The stored product is the float product, so adding B afterwards equals
  // adding it to the product in a register, except when B is A: then the
  // addend is the product that was just stored.
  if (B->data == A->data) {
    map_grouped<8>(
        A->dim, A->data,
        [scale](qel_float a) {
          const qel_float t = a * scale;
          return t + t;
        },
        A->data);
  } else {
    map_grouped<8>(
        A->dim, A->data, [scale](qel_float a, qel_float b) { return a * scale + b; }, A->data,
        B->data);
  }
}

// y[i] = x[i] * g, then g += step: the gain is a running single-precision sum,
// not gain + i*step, and the last increment is discarded. Count len; y may be x.
void qel_fl_mul_step(qel_float* y, const qel_float* x, qel_float gain, qel_float step, int len) {
  QEL_EXPECT(len >= 0, "len >= 0");
  QEL_EXPECT(len == 0 || (y != nullptr && x != nullptr), "y and x are not null");
  QEL_EXPECT(qel::detail::is_each_or_apart(len, y, x), "y is x or does not overlap it");
  qel_float g = gain;
  // The lanes of a group run in index order, so g advances element by element.
  map_grouped<8>(
      len, y,
      [&g, step](qel_float v) {
        const qel_float out = v * g;
        g = g + step;
        return out;
      },
      x);
}

}  // extern "C"

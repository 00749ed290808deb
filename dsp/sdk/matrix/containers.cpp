// SPDX-License-Identifier: MIT
// Vector lifecycle (the library's only allocation), fill, copy and views.
#include <cstring>

#include "detail/contract.hpp"
#include "vector.h"

namespace {

// Array sizes are computed in 32-bit arithmetic, as the allocator contract says,
// then widened for the allocator's size_t.
size_t array_bytes(int len) {
  const uint32_t bytes = static_cast<uint32_t>(len) * 4u;
  return bytes;
}

qel_float* new_array(int len) { return static_cast<qel_float*>(quelta_calloc(array_bytes(len))); }

// An empty array may be a null block from the allocator; memcpy must not see it.
void copy_array(qel_float* dst, const qel_float* src, int len) {
  if (len > 0) std::memcpy(dst, src, array_bytes(len));
}

// Copies len elements unless both sides are already the same array.
void copy_unless_same(qel_float* dst, const qel_float* src, int len) {
  if (dst != src) copy_array(dst, src, len);
}

}  // namespace

extern "C" {

qel_cpx_vec* qel_cpx_vec_init(int len) {
  QEL_EXPECT(len >= 0, "len >= 0");
  auto* v = static_cast<qel_cpx_vec*>(quelta_calloc(sizeof(qel_cpx_vec)));
  v->dim = len;
  v->re = new_array(len);
  v->im = new_array(len);
  return v;
}

qel_flt_vec* qel_flt_vec_init(int len) {
  QEL_EXPECT(len >= 0, "len >= 0");
  auto* v = static_cast<qel_flt_vec*>(quelta_calloc(sizeof(qel_flt_vec)));
  v->dim = len;
  v->data = new_array(len);
  return v;
}

// Release runs in the reverse order of allocation.
void qel_cpx_vec_free(qel_cpx_vec* v) {
  QEL_EXPECT(v != nullptr, "v is an owning vector, not null");
  quelta_free(v->im);
  quelta_free(v->re);
  quelta_free(v);
}

void qel_flt_vec_free(qel_flt_vec* v) {
  QEL_EXPECT(v != nullptr, "v is an owning vector, not null");
  quelta_free(v->data);
  quelta_free(v);
}

// Never in place: the result is always a fresh vector, even for the same dim.
qel_cpx_vec* qel_cpx_vec_resize(qel_cpx_vec* v, int dim) {
  QEL_EXPECT(v != nullptr && v->dim >= 0, "v is an owning vector");
  QEL_EXPECT(dim >= 0, "dim >= 0");
  qel_cpx_vec* r = qel_cpx_vec_init(dim);
  const int keep = (dim < v->dim) ? dim : v->dim;
  copy_array(r->re, v->re, keep);
  copy_array(r->im, v->im, keep);
  qel_cpx_vec_free(v);
  return r;
}

qel_flt_vec* qel_flt_vec_resize(qel_flt_vec* v, int dim) {
  QEL_EXPECT(v != nullptr && v->dim >= 0, "v is an owning vector");
  QEL_EXPECT(dim >= 0, "dim >= 0");
  qel_flt_vec* r = qel_flt_vec_init(dim);
  const int keep = (dim < v->dim) ? dim : v->dim;
  copy_array(r->data, v->data, keep);
  qel_flt_vec_free(v);
  return r;
}

qel_cpx_vec* qel_cpx_vec_clone(const qel_cpx_vec* v) {
  QEL_EXPECT(v != nullptr && v->dim >= 0, "v is a vector with dim >= 0");
  QEL_EXPECT(v->dim == 0 || (v->re != nullptr && v->im != nullptr), "v has arrays");
  qel_cpx_vec* r = qel_cpx_vec_init(v->dim);
  copy_array(r->re, v->re, v->dim);
  copy_array(r->im, v->im, v->dim);
  return r;
}

qel_flt_vec* qel_flt_vec_clone(const qel_flt_vec* v) {
  QEL_EXPECT(v != nullptr && v->dim >= 0, "v is a vector with dim >= 0");
  QEL_EXPECT(v->dim == 0 || v->data != nullptr, "v has an array");
  qel_flt_vec* r = qel_flt_vec_init(v->dim);
  copy_array(r->data, v->data, v->dim);
  return r;
}

void qel_cpx_vec_set(qel_cpx_vec* A, qel_float a, qel_float b) {
  QEL_EXPECT(A != nullptr, "A is not null");
  QEL_EXPECT(A->dim <= 0 || (A->re != nullptr && A->im != nullptr), "A has arrays");
  for (int k = 0; k < A->dim; ++k) {
    A->re[k] = a;
    A->im[k] = b;
  }
}

void qel_flt_vec_set(qel_flt_vec* A, qel_float a) {
  QEL_EXPECT(A != nullptr, "A is not null");
  QEL_EXPECT(A->dim <= 0 || A->data != nullptr, "A has an array");
  for (int k = 0; k < A->dim; ++k) A->data[k] = a;
}

void qel_short_vec_set(int16_t* data, int16_t a, int len) {
  QEL_EXPECT(len <= 0 || data != nullptr, "data is not null");
  for (int k = 0; k < len; ++k) data[k] = a;
}

void qel_flt_vec_copy(const qel_flt_vec* A, qel_flt_vec* B) {
  QEL_EXPECT(A != nullptr && B != nullptr, "A and B are not null");
  QEL_EXPECT(B->dim >= 0, "B->dim >= 0");
  QEL_EXPECT(B->dim == 0 || (A->data != nullptr && B->data != nullptr), "A and B have arrays");
  QEL_EXPECT(qel::detail::same_or_disjoint(A->data, qel::detail::float_bytes(B->dim), B->data,
                                           qel::detail::float_bytes(B->dim)),
             "A and B are the same array or do not overlap");
  copy_unless_same(B->data, A->data, B->dim);
}

// Each part has its own test, so a destination sharing only re still gets im.
void qel_cpx_vec_copy(const qel_cpx_vec* A, qel_cpx_vec* B) {
  QEL_EXPECT(A != nullptr && B != nullptr, "A and B are not null");
  QEL_EXPECT(B->dim >= 0, "B->dim >= 0");
  QEL_EXPECT(
      B->dim == 0 || (A->re != nullptr && A->im != nullptr && B->re != nullptr && B->im != nullptr),
      "A and B have arrays");
  QEL_EXPECT(qel::detail::same_or_disjoint(A->re, qel::detail::float_bytes(B->dim), B->re,
                                           qel::detail::float_bytes(B->dim)) &&
                 qel::detail::same_or_disjoint(A->im, qel::detail::float_bytes(B->dim), B->im,
                                               qel::detail::float_bytes(B->dim)),
             "each part of A and B is the same array or does not overlap");
  copy_unless_same(B->re, A->re, B->dim);
  copy_unless_same(B->im, A->im, B->dim);
}

// A range keeps its indices: element k of A lands in element k of B.
void qel_flt_vec_copy_subvec(const qel_flt_vec* A, int start, int end, qel_flt_vec* B) {
  QEL_EXPECT(A != nullptr && B != nullptr, "A and B are not null");
  QEL_EXPECT(end <= start || (start >= 0 && end < A->dim && end < B->dim),
             "start..end lies within A and B");
  if (end <= start) return;
  copy_unless_same(B->data + start, A->data + start, end - start + 1);
}

void qel_cpx_vec_copy_subvec(const qel_cpx_vec* A, int start, int end, qel_cpx_vec* B) {
  QEL_EXPECT(A != nullptr && B != nullptr, "A and B are not null");
  QEL_EXPECT(end <= start || (start >= 0 && end < A->dim && end < B->dim),
             "start..end lies within A and B");
  if (end <= start) return;
  copy_unless_same(B->re + start, A->re + start, end - start + 1);
  copy_unless_same(B->im + start, A->im + start, end - start + 1);
}

// out may be v itself: the record is then narrowed to the range in place.
void qel_cpx_vec_get_subvec(const qel_cpx_vec* v, int start, int end, qel_cpx_vec* out) {
  QEL_EXPECT(v != nullptr && out != nullptr, "v and out are not null");
  QEL_EXPECT(start >= 0 && end >= start - 1 && end < v->dim,
             "start..end lies within v (end >= start - 1)");
  out->dim = end - start + 1;
  out->re = v->re + start;
  out->im = v->im + start;
}

void qel_flt_vec_get_subvec(const qel_flt_vec* v, int start, int end, qel_flt_vec* out) {
  QEL_EXPECT(v != nullptr && out != nullptr, "v and out are not null");
  QEL_EXPECT(start >= 0 && end >= start - 1 && end < v->dim,
             "start..end lies within v (end >= start - 1)");
  out->dim = end - start + 1;
  out->data = v->data + start;
}

}  // extern "C"

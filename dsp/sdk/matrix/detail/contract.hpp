// SPDX-License-Identifier: MIT
// Caller promises, checked only in the QEL_CHECKED build.
//
// The library trusts its callers: counts, indices, sizes and overlaps are the
// caller's promise and nothing is tested. A firmware under development can
// build with -DQEL_CHECKED=ON: every exported function then checks those
// promises and, when one is broken, prints the function and the promise
// through bk_printf and traps. In the normal build QEL_EXPECT expands to
// nothing, so code and results are exactly those of an unchecked library.
#pragma once

#include <cstddef>
#include <cstdint>

#include "../vector.h"

#if defined(QEL_CHECKED) && QEL_CHECKED

namespace qel::detail {

[[noreturn]] void contract_failed(const char* function, const char* promise);

inline constexpr char kOutIsInputOrApart[] = "C is A or B, or does not overlap them";

// The arrays [a, a + a_bytes) and [b, b + b_bytes) are the very same array
// (same start) or do not overlap at all: what "in place" allows.
inline bool same_or_disjoint(const void* a, size_t a_bytes, const void* b, size_t b_bytes) {
  const auto pa = reinterpret_cast<uintptr_t>(a);
  const auto pb = reinterpret_cast<uintptr_t>(b);
  return pa == pb || a_bytes == 0 || b_bytes == 0 || pa + a_bytes <= pb || pb + b_bytes <= pa;
}

// The two arrays do not overlap at all.
inline bool disjoint(const void* a, size_t a_bytes, const void* b, size_t b_bytes) {
  const auto pa = reinterpret_cast<uintptr_t>(a);
  const auto pb = reinterpret_cast<uintptr_t>(b);
  return a_bytes == 0 || b_bytes == 0 || pa + a_bytes <= pb || pb + b_bytes <= pa;
}

// Bytes of n floats (n may be a count the caller got wrong: never negative here).
inline size_t float_bytes(int n) { return n > 0 ? static_cast<size_t>(n) * sizeof(float) : 0u; }

// Bytes of n elements of p's type, never negative as above.
template <typename T>
inline size_t bytes(const T* /*p*/, int n) {
  return n > 0 ? static_cast<size_t>(n) * sizeof(T) : 0u;
}

// The n floats at a and at b do not overlap; the same for a_n and b_n floats.
inline bool floats_disjoint(const float* a, const float* b, int n) {
  return disjoint(a, float_bytes(n), b, float_bytes(n));
}
inline bool floats_disjoint(const float* a, int a_n, const float* b, int b_n) {
  return disjoint(a, float_bytes(a_n), b, float_bytes(b_n));
}

// The n floats at a do not overlap the n floats that end at last (a window
// read backwards).
inline bool floats_disjoint_from_window(const float* a, const float* last, int n) {
  const size_t b = float_bytes(n);
  if (b == 0) return true;
  const auto pa = reinterpret_cast<uintptr_t>(a);
  const auto window_end = reinterpret_cast<uintptr_t>(last + 1);
  return pa + b <= window_end - b || window_end <= pa;
}

// A record serving n elements has its arrays; n <= 0 needs none.
inline bool has_arrays(const qel_flt_vec* v, int n) { return n <= 0 || v->data != nullptr; }
inline bool has_arrays(const qel_cpx_vec* v, int n) {
  return n <= 0 || (v->re != nullptr && v->im != nullptr);
}
template <typename... V>
inline bool have_arrays(int n, const V*... v) {
  return (has_arrays(v, n) && ...);
}

// An output of n elements against one input: the very same array (in place)
// or no overlap. A complex output's parts also lie apart from each other, and
// each may be only the input's matching part: re over im is never in place.
inline bool same_or_apart(const float* out, const float* in, int n) {
  return same_or_disjoint(out, float_bytes(n), in, float_bytes(n));
}
inline bool same_or_apart(const qel_flt_vec* out, const qel_flt_vec* in, int n) {
  return same_or_apart(out->data, in->data, n);
}
inline bool same_or_apart(const qel_cpx_vec* out, const qel_cpx_vec* in, int n) {
  return floats_disjoint(out->re, out->im, n) && same_or_apart(out->re, in->re, n) &&
         same_or_apart(out->im, in->im, n) && floats_disjoint(out->re, in->im, n) &&
         floats_disjoint(out->im, in->re, n);
}

// The output is each of the inputs or lies apart from it.
template <typename T, typename... In>
inline bool is_each_or_apart(int n, const T* out, const In*... in) {
  return (same_or_apart(out, in, n) && ...);
}

// The one float at p lies outside both parts of v's first n bins.
inline bool outside(const float* p, const qel_cpx_vec* v, int n) {
  return disjoint(p, sizeof *p, v->re, float_bytes(n)) &&
         disjoint(p, sizeof *p, v->im, float_bytes(n));
}

}  // namespace qel::detail

#define QEL_EXPECT(cond, promise)                                   \
  do {                                                              \
    if (!(cond)) ::qel::detail::contract_failed(__func__, promise); \
  } while (0)

#else

#define QEL_EXPECT(cond, promise) \
  do {                            \
  } while (0)

#endif

// The promises of an element-wise C = f(A, B) whose count is `count` (A->dim
// or C->dim): records not null, count not negative, arrays present, and C
// either is A or B or lies apart from them.
#define QEL_EXPECT_ELEMENTWISE(count)                                                  \
  QEL_EXPECT(A != nullptr && B != nullptr && C != nullptr, "A, B and C are not null"); \
  QEL_EXPECT((count) >= 0, #count " >= 0");                                            \
  QEL_EXPECT(qel::detail::have_arrays(count, A, B, C), "A, B and C have arrays");      \
  QEL_EXPECT(qel::detail::is_each_or_apart(count, C, A, B), qel::detail::kOutIsInputOrApart)

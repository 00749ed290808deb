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

#if defined(QEL_CHECKED) && QEL_CHECKED

namespace qel::detail {

[[noreturn]] void contract_failed(const char* function, const char* promise);

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

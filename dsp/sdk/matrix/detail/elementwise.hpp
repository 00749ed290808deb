// SPDX-License-Identifier: MIT
// Element-wise map over float arrays in groups, for kernels whose output may
// be one of their inputs.
#pragma once

#include <utility>

#include "../vector.h"
#include "blocks.hpp"

namespace qel::detail {

// out[i] = f(a[i]) (or f(a[i], b[i])) for i = 0..n-1 in ascending order, G per
// pass, then the remainder one by one by the same f. A pass loads all of its
// inputs before it stores any result, so out may be the very array of any
// input. n <= 0 does nothing.
//
// The groups live in s8.. upward (banks of blocks.hpp), clear of the scalar
// arguments that arrive in s0.
template <int G>
inline constexpr int kFirstBank = (G == 8) ? 1 : 2;

template <int G, typename F>
[[gnu::always_inline]] inline void map_grouped(int n, qel_float* out, F f, const qel_float* a) {
  using In = Block<G, kFirstBank<G>>;
  for (int g = n / G; g > 0; --g) {
    Lanes<G> x = In::load(a);
    [&]<int... k>(std::integer_sequence<int, k...>) { ((x[k] = f(x[k])), ...); }
    (std::make_integer_sequence<int, G>{});
    In::store(out, x);
  }
  for (int r = n % G; r > 0; --r) *out++ = f(*a++);
}

// One group of map_grouped below, in banks Bank and Bank + 1.
template <int G, int Bank, typename F>
[[gnu::always_inline]] inline void map_group(qel_float*& out, F f, const qel_float*& a,
                                             const qel_float*& b) {
  using InA = Block<G, Bank>;
  using InB = Block<G, Bank + 1>;
  Lanes<G> x = InA::load(a);
  const Lanes<G> y = InB::load(b);
  [&]<int... k>(std::integer_sequence<int, k...>) { ((x[k] = f(x[k], y[k])), ...); }
  (std::make_integer_sequence<int, G>{});
  InA::store(out, x);
}

// P groups per loop step (then the groups left one by one) spread the loop's
// own compare and branch over more elements; builds for size take one. A
// formula without scalar arguments may take Bank 0: s0-s15 need no saving.
template <int G, typename F, int P = 1, int Bank = kFirstBank<G>>
[[gnu::always_inline]] inline void map_grouped(int n, qel_float* out, F f, const qel_float* a,
                                               const qel_float* b) {
  int groups = n / G;
#if !defined(__OPTIMIZE_SIZE__)
  if constexpr (P > 1) {
    for (int g = groups / P; g > 0; --g) {
      map_group<G, Bank>(out, f, a, b);
      map_group<G, Bank>(out, f, a, b);
      if constexpr (P > 2) map_group<G, Bank>(out, f, a, b);
      if constexpr (P > 3) map_group<G, Bank>(out, f, a, b);
      static_assert(P <= 4);
    }
    groups %= P;
  }
#endif
  for (int g = groups; g > 0; --g) map_group<G, Bank>(out, f, a, b);
  for (int r = n % G; r > 0; --r) *out++ = f(*a++, *b++);
}

}  // namespace qel::detail

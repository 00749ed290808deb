// SPDX-License-Identifier: MIT
// Element-wise map over float arrays in groups, for kernels whose output may
// be one of their inputs.
#pragma once

#include <utility>

#include "../vector.h"
#include "block_io.hpp"

namespace qel::detail {

// out[i] = f(a[i]) (or f(a[i], b[i])) for i = 0..n-1 in ascending order, G per
// pass, then the remainder one by one by the same f. A pass loads all of its
// inputs before it stores any result, so out may be the very array of any
// input. n <= 0 does nothing.
template <int G, typename F>
[[gnu::always_inline]] inline void map_grouped(int n, qel_float* out, F f, const qel_float* a) {
  for (int g = n / G; g > 0; --g) {
    Block<G> x;
    load_block<G, 0>(a, x);
    [&]<int... k>(std::integer_sequence<int, k...>) {
      ((x.v[k] = f(x.v[k])), ...);
    }(std::make_integer_sequence<int, G>{});
    store_block(out, x);
  }
  for (int r = n % G; r > 0; --r) *out++ = f(*a++);
}

template <int G, typename F>
[[gnu::always_inline]] inline void map_grouped(int n, qel_float* out, F f, const qel_float* a,
                                               const qel_float* b) {
  for (int g = n / G; g > 0; --g) {
    Block<G> x, y;
    load_block<G, 0>(a, x);
    load_block<G, 1>(b, y);
    [&]<int... k>(std::integer_sequence<int, k...>) {
      ((x.v[k] = f(x.v[k], y.v[k])), ...);
    }(std::make_integer_sequence<int, G>{});
    store_block(out, x);
  }
  for (int r = n % G; r > 0; --r) *out++ = f(*a++, *b++);
}

}  // namespace qel::detail

// SPDX-License-Identifier: MIT
// Loop shapes shared by the element-wise kernels.
#pragma once

#include <utility>

namespace qel::detail {

// Calls op(i) for i = 0..n-1 in ascending order, G indices per pass, then the
// remainder one by one. n <= 0 does nothing. The body of a pass is unrolled at
// compile time, so the grouping costs nothing over a hand-unrolled loop.
template <int G, typename Op>
[[gnu::always_inline]] inline void for_each_grouped(int n, Op op) {
  int i = 0;
  for (; i + G <= n; i += G) {
    [&]<int... k>(std::integer_sequence<int, k...>) { (op(i + k), ...); }
    (std::make_integer_sequence<int, G>{});
  }
  for (; i < n; ++i) op(i);
}

}  // namespace qel::detail

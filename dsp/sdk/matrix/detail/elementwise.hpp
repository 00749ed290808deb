// SPDX-License-Identifier: MIT
// Element-wise map over float arrays in groups, for kernels whose output may
// be one of their inputs.
#pragma once

#include <utility>

#include "../vector.h"

namespace qel::detail {

// out[i] = f(in[i]...) for i = 0..n-1 in ascending order, G per pass, then the
// remainder one by one by the same f. A pass reads all of its inputs before it
// stores any result, so out may be the very array of any input; the loads of a
// pass are then free to be scheduled together. n <= 0 does nothing.
template <int G, typename F, typename... In>
[[gnu::always_inline]] inline void map_grouped(int n, qel_float* out, F f, const In*... in) {
  auto at = [&](int j) { return f(in[j]...); };
  int i = 0;
  for (; i + G <= n; i += G) {
    [&]<int... k>(std::integer_sequence<int, k...>) {
      const qel_float r[G] = {at(i + k)...};
      ((out[i + k] = r[k]), ...);
    }(std::make_integer_sequence<int, G>{});
  }
  for (; i < n; ++i) out[i] = at(i);
}

}  // namespace qel::detail

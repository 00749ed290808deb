// SPDX-License-Identifier: MIT
// Sums, variance and peak on the M33.
#include "counter.h"
#include "vector.h"

QEL_M33_BENCH(reductions) {
  using qel::bench::count;
  using qel::bench::report;
  constexpr int n = 512;
  static float x[n];
  for (int k = 0; k < n; ++k) x[k] = static_cast<float>(k % 37 - 18) * 0.25f;
  qel_flt_vec A = {n, x};
  volatile float sink = 0.0f;  // keeps the results alive
  report("qel_fl_sum", "512", count([&] { sink = qel_fl_sum(x, 0, n); }), n, "elem");
  report("qel_flt_vec_var", "512", count([&] { sink = qel_flt_vec_var(&A); }), n, "elem");
  report("qel_fl_abs_max", "512", count([&] { sink = qel_fl_abs_max(x, n); }), n, "elem");
  (void)sink;
}

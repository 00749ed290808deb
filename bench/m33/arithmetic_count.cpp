// SPDX-License-Identifier: MIT
// Scaling, addition with floors and selections on the M33.
#include "counter.h"
#include "vector.h"

QEL_M33_BENCH(arithmetic) {
  using qel::bench::count;
  using qel::bench::report;
  constexpr int n = 512;
  static float a[n], b[n], c[n];
  for (int k = 0; k < n; ++k) {
    a[k] = static_cast<float>(k % 37 - 18) * 0.25f;
    b[k] = static_cast<float>(k % 11 - 5) * 0.5f;
  }
  qel_flt_vec A = {n, a}, B = {n, b}, C = {n, c};
  report("qel_fl_mul_scale", "512", count([&] { qel_fl_mul_scale(c, a, 0.5f, n); }), n, "elem");
  report("qel_fl_add", "512", count([&] { qel_fl_add(a, b, c, n); }), n, "elem");
  report("qel_fl_max", "512", count([&] { qel_fl_max(a, c, 0.0f, n); }), n, "elem");
  report("qel_flt_vec_max", "512", count([&] { qel_flt_vec_max(&A, &B, &C); }), n, "elem");
}

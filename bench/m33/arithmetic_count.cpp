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
  report("qel_fl_add", "512", count([&] { qel_fl_add(a, b, c, n); }), n, "elem", 4.60);
  report("qel_fl_max", "512", count([&] { qel_fl_max(a, c, 0.0f, n); }), n, "elem");
  report("qel_flt_vec_max", "512", count([&] { qel_flt_vec_max(&A, &B, &C); }), n, "elem");

  // The rest of the family, for the record (no targets).
  static float d[n], e[n];
  qel_cpx_vec X = {n, a, b}, Y = {n, c, d}, Z = {n, e, c};
  report("qel_fl_mul_step", "512", count([&] { qel_fl_mul_step(c, a, 0.5f, 1e-3f, n); }), n,
         "elem");
  report("qel_flt_vec_pairwise_scale", "512", count([&] { qel_flt_vec_pairwise_scale(&C, &A); }), n,
         "elem");
  report("qel_flt_vec_pairwise_bias", "512",
         count([&] { qel_flt_vec_pairwise_bias(&C, &A, 0.25f); }), n, "elem");
  report("qel_cpx_vec_pairwise_bias", "512",
         count([&] { qel_cpx_vec_pairwise_bias(&Y, &X, 0.25f); }), n, "elem");
  report("qel_flt_vec_scale_add", "512", count([&] { qel_flt_vec_scale_add(&C, 0.5f, &A); }), n,
         "elem");
  report("qel_cpx_vec_scale_add", "512", count([&] { qel_cpx_vec_scale_add(&Y, 0.5f, &X); }), n,
         "elem");
  report("qel_cpx_vec_add", "512", count([&] { qel_cpx_vec_add(&X, &Y, &Z); }), n, "elem");
  report("qel_fl_add_max", "512", count([&] { qel_fl_add_max(a, b, c, 0.0f, n); }), n, "elem");
  report("qel_flt_vec_subtract_min", "512",
         count([&] { qel_flt_vec_subtract_min(&A, &B, 1.0f, &C); }), n, "elem");
  report("qel_flt_vec_max_value", "512", count([&] { qel_flt_vec_max_value(&A, 0.0f, &C); }), n,
         "elem");
  report("qel_cpx_vec_min", "512", count([&] { qel_cpx_vec_min(&X, &Y, &Z); }), n, "elem");
  report("qel_cpx_vec_max_value", "512", count([&] { qel_cpx_vec_max_value(&Y, 0.5f); }), n,
         "elem");
  // Slopes >= 1 keep every element above the threshold above it (up to inf),
  // so each repeated call takes the same branches.
  static float slope[n];
  for (int k = 0; k < n; ++k) slope[k] = 1.0f + static_cast<float>(k % 5) * 0.25f;
  qel_flt_vec S = {n, slope};
  report("qel_flt_vec_smooth", "512", count([&] { qel_flt_vec_smooth(&C, &S, 0.5f); }), n, "elem");
}

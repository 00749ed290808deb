// SPDX-License-Identifier: MIT
// Spectra on the M33: instructions per bin at a typical 257-bin frame.
#include "counter.h"
#include "vector.h"

QEL_M33_BENCH(spectra) {
  using qel::bench::count;
  using qel::bench::report;
  constexpr int n = 257;
  static float ar[n], ai[n], br[n], bi[n], cr[n], ci[n], out[n];
  for (int k = 0; k < n; ++k) {
    ar[k] = static_cast<float>(k % 17) * 0.25f - 2.0f;
    ai[k] = static_cast<float>(k % 13) * 0.5f - 3.0f;
    br[k] = static_cast<float>(k % 11) * 0.125f + 0.5f;  // no zero denominators
    bi[k] = static_cast<float>(k % 7) * 0.75f + 1.0f;
    cr[k] = ci[k] = 0.0f;
  }
  qel_cpx_vec A{n, ar, ai}, B{n, br, bi}, C{n, cr, ci};
  qel_flt_vec D{n, br}, O{n, out};
  // qel_cpx_vec_abs counts its qel_sqrtf calls too (BL, VSQRT, return).
  report("qel_cpx_vec_dot_product_conj", "257",
         count([&] { qel_cpx_vec_dot_product_conj(&A, &B, &C); }), n, "bin", 13.5);
  report("qel_cpx_vec_dot_product_maddc_conj", "257",
         count([&] { qel_cpx_vec_dot_product_maddc_conj(&A, &B, &C); }), n, "bin", 18.0);
  report("qel_cpx_vec_dot_product", "257", count([&] { qel_cpx_vec_dot_product(&A, &B, &C); }), n,
         "bin");
  report("qel_cpx_vec_power", "257", count([&] { qel_cpx_vec_power(&A, &O); }), n, "bin", 7.00);
  report("qel_cpx_vec_abs (+sqrt call)", "257", count([&] { qel_cpx_vec_abs(&A, &O); }), n, "bin");
  report("qel_cpx_vec_power_sum", "257", count([&] { (void)qel_cpx_vec_power_sum(&A); }), n, "bin",
         6.50);
  report("qel_cpx_vec_dot_division", "257", count([&] { qel_cpx_vec_dot_division(&A, &B, &C); }), n,
         "bin");
  report("qel_cpx_vec_dot_division_flt", "257",
         count([&] { qel_cpx_vec_dot_division_flt(&A, &D, &C); }), n, "bin");
  report("qel_flt_vec_dot_division", "257", count([&] { qel_flt_vec_dot_division(&O, &D, &O); }), n,
         "bin");

  // The rest of the family, for the record (no targets).
  report("qel_cpx_vec_dot_product_flt", "257",
         count([&] { qel_cpx_vec_dot_product_flt(&A, &D, &C); }), n, "bin");
  report("qel_cpx_vec_conj", "257", count([&] { qel_cpx_vec_conj(&A, &C); }), n, "bin");
  report("qel_flt_vec_ratio_flt", "257", count([&] { qel_flt_vec_ratio_flt(&O, &D, 0.5f, &O); }), n,
         "bin");
  float re = 0.0f, im = 0.0f;
  report("qel_cpx_vec_inner_product", "257",
         count([&] { qel_cpx_vec_inner_product(&A, &B, &re, &im); }), n, "bin");
}

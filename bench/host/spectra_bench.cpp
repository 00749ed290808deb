// SPDX-License-Identifier: MIT
// Spectra timings on the host, next to the plain references.
#include <benchmark/benchmark.h>

#include <vector>

#include "ref/spectra_ref.h"
#include "vector.h"

namespace {

struct Spectra {
  std::vector<float> ar, ai, br, bi, cr, ci;
  explicit Spectra(int n) {
    for (int k = 0; k < n; ++k) {
      ar.push_back(static_cast<float>(k % 17) * 0.25f - 2.0f);
      ai.push_back(static_cast<float>(k % 13) * 0.5f - 3.0f);
      br.push_back(static_cast<float>(k % 11) * 0.125f + 0.5f);
      bi.push_back(static_cast<float>(k % 7) * 0.75f + 1.0f);
    }
    cr.resize(static_cast<size_t>(n));
    ci.resize(static_cast<size_t>(n));
  }
};

void BM_qel_cpx_vec_dot_product_conj(benchmark::State& s) {
  const int n = static_cast<int>(s.range(0));
  Spectra d(n);
  qel_cpx_vec A{n, d.ar.data(), d.ai.data()}, B{n, d.br.data(), d.bi.data()},
      C{n, d.cr.data(), d.ci.data()};
  for (auto _ : s) {
    qel_cpx_vec_dot_product_conj(&A, &B, &C);
    benchmark::ClobberMemory();
  }
  s.SetItemsProcessed(s.iterations() * n);
}
void BM_ref_cpx_conj_product(benchmark::State& s) {
  const int n = static_cast<int>(s.range(0));
  Spectra d(n);
  for (auto _ : s) {
    qel::ref::cpx_conj_product(d.ar.data(), d.ai.data(), d.br.data(), d.bi.data(), d.cr.data(),
                               d.ci.data(), n);
    benchmark::ClobberMemory();
  }
  s.SetItemsProcessed(s.iterations() * n);
}
BENCHMARK(BM_qel_cpx_vec_dot_product_conj)->Arg(257);
BENCHMARK(BM_ref_cpx_conj_product)->Arg(257);

void BM_qel_cpx_vec_power(benchmark::State& s) {
  const int n = static_cast<int>(s.range(0));
  Spectra d(n);
  qel_cpx_vec A{n, d.ar.data(), d.ai.data()};
  qel_flt_vec P{n, d.cr.data()};
  for (auto _ : s) {
    qel_cpx_vec_power(&A, &P);
    benchmark::ClobberMemory();
  }
  s.SetItemsProcessed(s.iterations() * n);
}
void BM_ref_power(benchmark::State& s) {
  const int n = static_cast<int>(s.range(0));
  Spectra d(n);
  for (auto _ : s) {
    qel::ref::power(d.ar.data(), d.ai.data(), d.cr.data(), n);
    benchmark::ClobberMemory();
  }
  s.SetItemsProcessed(s.iterations() * n);
}
BENCHMARK(BM_qel_cpx_vec_power)->Arg(257);
BENCHMARK(BM_ref_power)->Arg(257);

void BM_qel_cpx_vec_power_sum(benchmark::State& s) {
  const int n = static_cast<int>(s.range(0));
  Spectra d(n);
  qel_cpx_vec A{n, d.ar.data(), d.ai.data()};
  for (auto _ : s) benchmark::DoNotOptimize(qel_cpx_vec_power_sum(&A));
  s.SetItemsProcessed(s.iterations() * n);
}
void BM_ref_power_sum(benchmark::State& s) {
  const int n = static_cast<int>(s.range(0));
  Spectra d(n);
  for (auto _ : s) benchmark::DoNotOptimize(qel::ref::power_sum(d.ar.data(), d.ai.data(), n));
  s.SetItemsProcessed(s.iterations() * n);
}
BENCHMARK(BM_qel_cpx_vec_power_sum)->Arg(257);
BENCHMARK(BM_ref_power_sum)->Arg(257);

void BM_qel_cpx_vec_dot_division_flt(benchmark::State& s) {
  const int n = static_cast<int>(s.range(0));
  Spectra d(n);
  qel_cpx_vec A{n, d.ar.data(), d.ai.data()}, C{n, d.cr.data(), d.ci.data()};
  qel_flt_vec B{n, d.br.data()};
  for (auto _ : s) {
    qel_cpx_vec_dot_division_flt(&A, &B, &C);
    benchmark::ClobberMemory();
  }
  s.SetItemsProcessed(s.iterations() * n);
}
void BM_ref_cpx_division_flt(benchmark::State& s) {
  const int n = static_cast<int>(s.range(0));
  Spectra d(n);
  for (auto _ : s) {
    qel::ref::cpx_division_flt(d.ar.data(), d.ai.data(), d.br.data(), d.cr.data(), d.ci.data(), n);
    benchmark::ClobberMemory();
  }
  s.SetItemsProcessed(s.iterations() * n);
}
BENCHMARK(BM_qel_cpx_vec_dot_division_flt)->Arg(257);
BENCHMARK(BM_ref_cpx_division_flt)->Arg(257);

}  // namespace

// SPDX-License-Identifier: MIT
// FIR filter timings on the host, next to the plain references.
#include <benchmark/benchmark.h>

#include <vector>

#include "ref/fir_ref.h"
#include "vector.h"

namespace {

struct Filter {
  std::vector<float> coeffs, src, dst, state;
  Filter(int taps, int n, int factor)
      : coeffs(static_cast<size_t>(taps)),
        src(static_cast<size_t>(n)),
        dst(static_cast<size_t>(n * factor)),
        state(static_cast<size_t>(taps - 1 + n * factor), 0.0f) {
    for (int k = 0; k < taps; ++k)
      coeffs[static_cast<size_t>(k)] = static_cast<float>(k % 7 - 3) * 0.1f;
    for (int k = 0; k < n; ++k)
      src[static_cast<size_t>(k)] = static_cast<float>(k % 41 - 20) * 0.05f;
  }
};

template <auto Fn>
void BM_Fir(benchmark::State& s) {
  const int taps = static_cast<int>(s.range(0)), n = 160;
  Filter f(taps, n, 1);
  for (auto _ : s) {
    Fn(f.src.data(), f.dst.data(), f.state.data(), f.coeffs.data(), taps, n);
    benchmark::ClobberMemory();
  }
  s.SetItemsProcessed(s.iterations() * taps * n);  // MACs
}
BENCHMARK(BM_Fir<qel_flt_fir>)->Arg(32)->Arg(128);
BENCHMARK(BM_Fir<qel::ref::fir>)->Arg(32)->Arg(128);

// Decimator M 3 over 480 inputs; interpolator L 3 over 160 inputs; 48 taps.
template <auto Fn>
void BM_FirRate(benchmark::State& s) {
  const int taps = 48, factor = 3, n = static_cast<int>(s.range(0));
  Filter f(taps, n, factor);
  for (auto _ : s) {
    Fn(f.src.data(), f.dst.data(), f.state.data(), f.coeffs.data(), taps, factor, n);
    benchmark::ClobberMemory();
  }
  s.SetItemsProcessed(s.iterations() * n);  // input samples
}
BENCHMARK(BM_FirRate<qel_flt_fir_decimate>)->Arg(480);
BENCHMARK(BM_FirRate<qel::ref::fir_decimate>)->Arg(480);
BENCHMARK(BM_FirRate<qel_flt_fir_interpolate>)->Arg(160);
BENCHMARK(BM_FirRate<qel::ref::fir_interpolate>)->Arg(160);

}  // namespace

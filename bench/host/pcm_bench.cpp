// SPDX-License-Identifier: MIT
// PCM conversion timings on the host, next to the plain references.
#include <benchmark/benchmark.h>

#include <vector>

#include "ref/pcm_ref.h"
#include "vector.h"

namespace {

template <auto Fn>
void BM_Denormalize(benchmark::State& s) {
  const int n = static_cast<int>(s.range(0));
  std::vector<float> in(static_cast<size_t>(n));
  std::vector<int16_t> out(static_cast<size_t>(n));
  for (int k = 0; k < n; ++k)
    in[static_cast<size_t>(k)] = static_cast<float>(k % 200 - 100) * 0.011f;
  for (auto _ : s) {
    Fn(in.data(), out.data(), n);
    benchmark::ClobberMemory();
  }
  s.SetItemsProcessed(s.iterations() * n);
}
BENCHMARK(BM_Denormalize<qel_vec_denormalize>)->Arg(512);
BENCHMARK(BM_Denormalize<qel::ref::denormalize>)->Arg(512);

}  // namespace

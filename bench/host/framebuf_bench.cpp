// SPDX-License-Identifier: MIT
// Delay line and windowed accumulation timings on the host, next to the plain
// references.
#include <benchmark/benchmark.h>

#include <vector>

#include "ref/framebuf_ref.h"
#include "vector.h"

namespace {

// A block of range(1) samples through a line of range(0), the position
// advancing from call to call as a running line's does.
template <auto Fn>
void BM_Circular(benchmark::State& s) {
  const int delay_len = static_cast<int>(s.range(0));
  const int n = static_cast<int>(s.range(1));
  std::vector<float> delay(static_cast<size_t>(delay_len)), in(static_cast<size_t>(n)),
      gain(static_cast<size_t>(n), 0.5f), out(static_cast<size_t>(n));
  for (int k = 0; k < n; ++k) in[static_cast<size_t>(k)] = static_cast<float>(k) * 0.25f;
  int p = 0;
  for (auto _ : s) {
    Fn(out.data(), delay.data(), in.data(), gain.data(), delay_len, p, n);
    benchmark::ClobberMemory();
    p = (p + n) % delay_len;
  }
  s.SetItemsProcessed(s.iterations() * n);
}
BENCHMARK(BM_Circular<qel_fl_circular>)->Args({480, 160});
BENCHMARK(BM_Circular<qel::ref::circular>)->Args({480, 160});

template <auto Fn>
void BM_Maa(benchmark::State& s) {
  const int n = static_cast<int>(s.range(0));
  std::vector<float> frame(static_cast<size_t>(n)), buff(static_cast<size_t>(n)),
      window(static_cast<size_t>(n));
  for (int k = 0; k < n; ++k) {
    buff[static_cast<size_t>(k)] = static_cast<float>(k % 17) * 0.125f;
    window[static_cast<size_t>(k)] = static_cast<float>(k) / static_cast<float>(n);
  }
  for (auto _ : s) {
    Fn(frame.data(), buff.data(), window.data() + n - 1, n);
    benchmark::ClobberMemory();
  }
  s.SetItemsProcessed(s.iterations() * n);
}
BENCHMARK(BM_Maa<qel_fl_maa>)->Arg(512);
BENCHMARK(BM_Maa<qel::ref::maa>)->Arg(512);

}  // namespace

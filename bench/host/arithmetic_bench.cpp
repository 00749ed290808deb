// SPDX-License-Identifier: MIT
// Scaling, addition, floors and reductions on the host, next to the plain
// references.
#include <benchmark/benchmark.h>

#include <vector>

#include "ref/arithmetic_ref.h"
#include "ref/reductions_ref.h"
#include "vector.h"

namespace {

struct Buffers {
  explicit Buffers(int n) : a(static_cast<size_t>(n)), b(a.size()), c(a.size()) {
    for (int k = 0; k < n; ++k) {
      a[static_cast<size_t>(k)] = static_cast<float>(k % 37 - 18) * 0.25f;
      b[static_cast<size_t>(k)] = static_cast<float>(k % 11 - 5) * 0.5f;
    }
  }
  std::vector<float> a, b, c;
};

template <auto Fn>
void BM_MulScale(benchmark::State& s) {
  const int n = static_cast<int>(s.range(0));
  Buffers b(n);
  for (auto _ : s) {
    Fn(b.c.data(), b.a.data(), 0.5f, n);
    benchmark::ClobberMemory();
  }
  s.SetItemsProcessed(s.iterations() * n);
}
BENCHMARK(BM_MulScale<qel_fl_mul_scale>)->Arg(512);
BENCHMARK(BM_MulScale<qel::ref::fl_mul_scale>)->Arg(512);

template <auto Fn>
void BM_Add(benchmark::State& s) {
  const int n = static_cast<int>(s.range(0));
  Buffers b(n);
  for (auto _ : s) {
    Fn(b.a.data(), b.b.data(), b.c.data(), n);
    benchmark::ClobberMemory();
  }
  s.SetItemsProcessed(s.iterations() * n);
}
BENCHMARK(BM_Add<qel_fl_add>)->Arg(512);
BENCHMARK(BM_Add<qel::ref::fl_add>)->Arg(512);

template <auto Fn>
void BM_Max(benchmark::State& s) {
  const int n = static_cast<int>(s.range(0));
  Buffers b(n);
  for (auto _ : s) {
    Fn(b.a.data(), b.c.data(), 0.0f, n);
    benchmark::ClobberMemory();
  }
  s.SetItemsProcessed(s.iterations() * n);
}
BENCHMARK(BM_Max<qel_fl_max>)->Arg(512);
BENCHMARK(BM_Max<qel::ref::fl_max>)->Arg(512);

template <auto Fn>
void BM_VecMax(benchmark::State& s) {
  const int n = static_cast<int>(s.range(0));
  Buffers b(n);
  qel_flt_vec A = {n, b.a.data()}, B = {n, b.b.data()}, C = {n, b.c.data()};
  for (auto _ : s) {
    Fn(&A, &B, &C);
    benchmark::ClobberMemory();
  }
  s.SetItemsProcessed(s.iterations() * n);
}
BENCHMARK(BM_VecMax<qel_flt_vec_max>)->Arg(512);
BENCHMARK(BM_VecMax<qel::ref::flt_vec_max>)->Arg(512);

template <auto Fn>
void BM_Sum(benchmark::State& s) {
  const int n = static_cast<int>(s.range(0));
  Buffers b(n);
  for (auto _ : s) benchmark::DoNotOptimize(Fn(b.a.data(), 0, n));
  s.SetItemsProcessed(s.iterations() * n);
}
BENCHMARK(BM_Sum<qel_fl_sum>)->Arg(512);
BENCHMARK(BM_Sum<qel::ref::fl_sum>)->Arg(512);

template <auto Fn>
void BM_Var(benchmark::State& s) {
  const int n = static_cast<int>(s.range(0));
  Buffers b(n);
  qel_flt_vec A = {n, b.a.data()};
  for (auto _ : s) benchmark::DoNotOptimize(Fn(&A));
  s.SetItemsProcessed(s.iterations() * n);
}
BENCHMARK(BM_Var<qel_flt_vec_var>)->Arg(512);
BENCHMARK(BM_Var<qel::ref::flt_vec_var>)->Arg(512);

template <auto Fn>
void BM_AbsMax(benchmark::State& s) {
  const int n = static_cast<int>(s.range(0));
  Buffers b(n);
  for (auto _ : s) benchmark::DoNotOptimize(Fn(b.a.data(), n));
  s.SetItemsProcessed(s.iterations() * n);
}
BENCHMARK(BM_AbsMax<qel_fl_abs_max>)->Arg(512);
BENCHMARK(BM_AbsMax<qel::ref::fl_abs_max>)->Arg(512);

}  // namespace

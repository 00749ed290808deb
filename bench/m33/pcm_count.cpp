// SPDX-License-Identifier: MIT
// PCM conversion on the M33.
#include <vector>

#include "counter.h"
#include "vector.h"

QEL_M33_BENCH(pcm) {
  using qel::bench::count;
  using qel::bench::report;
  constexpr int n = 512;
  static int16 s[n];
  static float f[n];
  static int32 s24[n];
  for (int k = 0; k < n; ++k) {
    s[k] = static_cast<int16>(k * 97 - 20000);
    s24[k] = k * 12345 - 3000000;
  }
  report("qel_vec_normalize", "512", count([&] { qel_vec_normalize(s, f, n); }), n, "sample");
  report("qel_vec_denormalize", "512", count([&] { qel_vec_denormalize(f, s, n); }), n, "sample");
  report("qel_vec_normalize24", "512", count([&] { qel_vec_normalize24(s24, f, n); }), n, "sample");
  report("qel_vec_denormalize24", "512", count([&] { qel_vec_denormalize24(f, s24, n); }), n,
         "sample");
}

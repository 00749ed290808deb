// SPDX-License-Identifier: MIT
// Inner loops shared by the block FIR, the decimator and the interpolator.
//
// Every filter here works on a window sequence w in the caller's state buffer
// and computes outputs y = sum over k ascending of c[k] * w[start + k], one
// accumulator per output starting at 0.0f. The speed-ups below only change how
// often a sample or a coefficient is loaded, never the order of additions, so
// every output has the bits of the one-output-at-a-time loop.
#pragma once

#include <type_traits>
#include <utility>

#include "detail/blocks.hpp"
#include "detail/mac.hpp"
#include "utils.h"

// Lambdas of the unrolled loops must be inlined like the functions around
// them, or the window ring would go through memory.
#define QEL_INLINE __attribute__((always_inline))

namespace qel::detail {

// Builds for size (-Os) keep one general path per filter; the variants for
// small rate factors trade code for speed, and give the same results.
#if defined(__OPTIMIZE_SIZE__)
inline constexpr bool kFactorVariants = false;
#else
inline constexpr bool kFactorVariants = true;
#endif

// Outputs per group of the unit-stride filters: ten share each coefficient
// load on the M33 (blocks of two taps keep the ring, sums and coefficients in
// registers); builds for size keep eight.
inline constexpr int kWideGroup = kFactorVariants ? 10 : 8;
inline constexpr int kWideBlock = 2;

// A stride known at compile time (1) or at run time (an int): loads at
// compile-time strides fold into immediate offsets.
using UnitStride = std::integral_constant<int, 1>;

// Calls f.operator()<i>() for i = 0..N-1 in order, unrolled.
template <int N, typename F>
[[gnu::always_inline]] inline void unroll(F&& f) {
  [&]<int... i>(std::integer_sequence<int, i...>) QEL_INLINE { (f.template operator()<i>(), ...); }
  (std::make_integer_sequence<int, N>{});
}

// Taps per block of the M33 loop below: by default the largest of 4, 2, 1 that
// lets the ring, the G sums, the B coefficients and a product share the 32
// registers. A caller may ask for fewer where the allocator copies registers
// around a full set.
template <int G, int D>
constexpr int kBlockTaps = (D * (G - 1) + 1 + 3 + 3) / 4 * 4 <= 32 - G - 4 - 1 ? 4
                           : (D*(G - 1) + 1 + 1 + 1) / 2 * 2 <= 32 - G - 2 - 1 ? 2
                                                                               : 1;

#if QEL_ARM_VFP && !defined(__OPTIMIZE_SIZE__)
// B coefficients and B samples, loaded back to back from fixed offsets
// (bytes) of bases that stay put during the loop: a run of loads overlaps
// each load with the next, where loads between arithmetic, or with
// write-back, take two cycles each.
template <int B, int Cs, int C0, int W0>
[[gnu::always_inline]] inline void load_block(float (&cf)[B], const float* cp, const float* wp,
                                              float& x0, float& x1, float& x2, float& x3) {
  if constexpr (B == 4) {
    __asm volatile(
        "vldr %0, [%8, %10]\n\tvldr %1, [%8, %11]\n\tvldr %2, [%8, %12]\n\t"
        "vldr %3, [%8, %13]\n\tvldr %4, [%9, %14]\n\tvldr %5, [%9, %15]\n\t"
        "vldr %6, [%9, %16]\n\tvldr %7, [%9, %17]"
        : "=t"(cf[0]), "=t"(cf[1]), "=t"(cf[2]), "=t"(cf[3]), "=t"(x0), "=t"(x1), "=t"(x2), "=t"(x3)
        : "r"(cp), "r"(wp), "i"(C0), "i"(C0 + Cs), "i"(C0 + 2 * Cs), "i"(C0 + 3 * Cs), "i"(W0),
          "i"(W0 + Cs), "i"(W0 + 2 * Cs), "i"(W0 + 3 * Cs)
        : "memory");
  } else if constexpr (B == 2) {
    __asm volatile(
        "vldr %0, [%4, %6]\n\tvldr %1, [%4, %7]\n\tvldr %2, [%5, %8]\n\tvldr %3, [%5, %9]"
        : "=t"(cf[0]), "=t"(cf[1]), "=t"(x0), "=t"(x1)
        : "r"(cp), "r"(wp), "i"(C0), "i"(C0 + Cs), "i"(W0), "i"(W0 + Cs)
        : "memory");
  } else {
    __asm volatile("vldr %0, [%2, %4]\n\tvldr %1, [%3, %5]"
                   : "=t"(cf[0]), "=t"(x0)
                   : "r"(cp), "r"(wp), "i"(C0), "i"(W0)
                   : "memory");
  }
}

// fir_group below for a stride known at compile time, with its schedule
// fixed. Taps go in blocks of B: the block's B coefficients and B new samples
// are loaded in one run, then each tap feeds the G outputs in order. The ring
// holds Q samples (sample t in slot t mod Q), the least multiple of B that
// covers a block's R + B - 1. The loop covers Q taps, so every slot is a
// fixed register; the blocks left over run the same code once, and the last
// taps mod B load directly.
template <int G, int D, int B, int s>
[[gnu::always_inline]] inline void fir_group_vfp(const float* w, const float* c, int taps,
                                                 float (&y)[G]) {
  constexpr int R = D * (G - 1) + 1;
  constexpr int Q = (R + B - 1 + B - 1) / B * B;
  constexpr int Cs = 4 * s;  // bytes between taps
  static_assert(Q >= R + B - 1);
  static_assert((Q + R) * Cs <= 1020, "VLDR offsets reach 1020 bytes");
  float x[Q];
  unroll<R - 1>([&]<int t>() QEL_INLINE { x[t] = w[t * s]; });
  unroll<G>([&]<int g>() QEL_INLINE { y[g] = 0.0f; });
  // Block m of the loop: taps m*B .. m*B+B-1 from wk, ck.
  auto block = [&]<int m>(const float* wk, const float* ck) QEL_INLINE {
    float cf[B];
    constexpr int t0 = m * B + R - 1;  // first new sample
    // Slots of the new samples; the spare operands of small blocks repeat the first.
    constexpr int n1 = (t0 + (B > 1 ? 1 : 0)) % Q, n2 = (t0 + (B > 2 ? 2 : 0)) % Q;
    constexpr int n3 = (t0 + (B > 3 ? 3 : 0)) % Q;
    load_block<B, Cs, Cs * m * B, Cs * t0>(cf, ck, wk, x[t0 % Q], x[n1], x[n2], x[n3]);
    unroll<B>([&]<int j>() QEL_INLINE {
      unroll<G>([&]<int g>() QEL_INLINE { mac_here(y[g], cf[j], x[(m * B + j + g * D) % Q]); });
    });
  };
  constexpr int kBlocks = Q / B;
  const float* wk = w;
  const float* ck = c;
  for (int n = taps / Q; n > 0; --n) {
    unroll<kBlocks>([&]<int m>() QEL_INLINE { block.template operator()<m>(wk, ck); });
    wk += Q * s;
    ck += Q * s;
  }
  int k = taps / Q * Q;
  const int left = (taps - k) / B;
  unroll<kBlocks - 1>([&]<int m>() QEL_INLINE {
    if (m < left) block.template operator()<m>(wk, ck);
  });
  for (k += left * B; k < taps; ++k) {
    const float ck1 = c[k * s];
    unroll<G>([&]<int g>() QEL_INLINE { mac_here(y[g], ck1, w[(g * D + k) * s]); });
  }
}
#endif

// One output over taps ascending: the plain formula, used for the outputs
// left over after the groups.
template <bool Tuned = false, typename S>
[[gnu::always_inline]] inline float fir_dot(const float* w, const float* c, int taps, S s) {
  float acc = 0.0f;
  int k = 0;
#if QEL_ARM_VFP && !defined(__OPTIMIZE_SIZE__)
  if constexpr (Tuned && !std::is_same_v<S, int>) {
    // Runs of four coefficients and four samples, as in fir_group_vfp.
    for (; k + 4 <= taps; k += 4) {
      float cf[4], x0, x1, x2, x3;
      load_block<4, 4 * S::value, 0, 0>(cf, c + k * s, w + k * s, x0, x1, x2, x3);
      mac_here(acc, cf[0], x0);
      mac_here(acc, cf[1], x1);
      mac_here(acc, cf[2], x2);
      mac_here(acc, cf[3], x3);
    }
  }
#endif
  for (; k < taps; ++k) acc = mac(acc, c[k * s], w[k * s]);
  return acc;
}

// G outputs at once: y[g] = sum over k < taps of c[k*s] * w[(g*D + k)*s].
//
// At tap k output g reads sample t = g*D + k, so the G outputs of one tap need
// samples k, k+D, ..., k+(G-1)*D. Those live in a ring of R = D*(G-1)+1
// registers: each tap loads one coefficient and one new sample (t = k+R-1,
// into the slot of sample k-1, which no output needs any more) and feeds all
// G accumulators. The tap loop is unrolled by R so every ring slot is a fixed
// register; the last taps mod R load their G samples directly, so the ring
// need not outlive the loop.
template <int G, int D, int B, bool Tuned, typename S>
[[gnu::always_inline]] inline void fir_group(const float* w, const float* c, int taps, S s,
                                             float (&y)[G]) {
#if QEL_ARM_VFP && !defined(__OPTIMIZE_SIZE__)
  if constexpr (Tuned && !std::is_same_v<S, int>) {
    fir_group_vfp<G, D, B, S::value>(w, c, taps, y);
    return;
  }
#endif
  constexpr int R = D * (G - 1) + 1;
  float x[R];
  unroll<R - 1>([&]<int t>() QEL_INLINE { x[t] = w[t * s]; });
  unroll<G>([&]<int g>() QEL_INLINE { y[g] = 0.0f; });
  auto tap = [&]<int j>(const float* wk, const float* ck) QEL_INLINE {
    x[(j + R - 1) % R] = wk[(j + R - 1) * s];
    const float cj = ck[j * s];
    unroll<G>([&]<int g>() QEL_INLINE { y[g] = mac(y[g], cj, x[(j + g * D) % R]); });
  };
  int k = 0;
  for (; k + R <= taps; k += R) {
    const float* wk = w + k * s;
    const float* ck = c + k * s;
    unroll<R>([&]<int j>() QEL_INLINE { tap.template operator()<j>(wk, ck); });
  }
  for (; k < taps; ++k) {
    const float ck = c[k * s];
    unroll<G>([&]<int g>() QEL_INLINE { y[g] = mac(y[g], ck, w[(g * D + k) * s]); });
  }
}

// count outputs, output n taking its window at w + n*D*s: groups of G, then
// the rest one at a time. store(n, y) receives them in ascending n. Tuned
// takes the M33 loop of fir_group_vfp (about 2.5 KB of code a variant); the
// paths that matter less keep the compact loop.
template <int G, int D, int B = kBlockTaps<G, D>, bool Tuned = true, typename S, typename Store>
[[gnu::always_inline]] inline void fir_outputs(const float* w, const float* c, int taps, int count,
                                               S s, Store&& store) {
  int n = 0;
  for (; n + G <= count; n += G) {
    float y[G];
    fir_group<G, D, B, Tuned>(w + n * D * s, c, taps, s, y);
    unroll<G>([&]<int g>() QEL_INLINE { store(n + g, y[g]); });
  }
  for (; n < count; ++n) store(n, fir_dot<Tuned>(w + n * D * s, c, taps, s));
}

// Copies the first n entries of src into the state, each as a float.
template <typename T>
[[gnu::always_inline]] inline void append(const T* src, float* dst, int n) {
  int i = 0;
#if QEL_ARM_VFP && !defined(__OPTIMIZE_SIZE__)
  if constexpr (std::is_same_v<T, float>) {
    // Eight at a time through registers: one VLDM and one VSTM.
    const float* p = src;
    float* q = dst;
    for (; i + 8 <= n; i += 8) Block<8, 0>::store(q, Block<8, 0>::load(p));
  }
#endif
  for (; i + 4 <= n; i += 4) {
    const float a = static_cast<float>(src[i]), b = static_cast<float>(src[i + 1]);
    const float c = static_cast<float>(src[i + 2]), d = static_cast<float>(src[i + 3]);
    dst[i] = a;
    dst[i + 1] = b;
    dst[i + 2] = c;
    dst[i + 3] = d;
  }
  for (; i < n; ++i) dst[i] = static_cast<float>(src[i]);
}

// History move: pState[j] = pState[appended + j] for j = 0..numTaps-2,
// ascending. The source lies above the destination, so reading a group before
// writing it gives the element-by-element result even when they overlap.
inline void move_history(float* pState, int appended, int numTaps) {
  const float* src = pState + appended;
  const int n = numTaps - 1;
  int j = 0;
#if QEL_ARM_VFP && !defined(__OPTIMIZE_SIZE__)
  {
    const float* p = src;
    float* q = pState;
    for (; j + 8 <= n; j += 8) Block<8, 0>::store(q, Block<8, 0>::load(p));
  }
#endif
  for (; j + 4 <= n; j += 4) {
    const float a = src[j], b = src[j + 1], c = src[j + 2], d = src[j + 3];
    pState[j] = a;
    pState[j + 1] = b;
    pState[j + 2] = c;
    pState[j + 3] = d;
  }
  for (; j < n; ++j) pState[j] = src[j];
}

// Output stores: the float forms store y, the 16-bit forms saturate and truncate.
inline void store_output(float* p, float y) { *p = y; }
inline void store_output(int16* p, float y) { *p = float_to_int16(y); }

}  // namespace qel::detail

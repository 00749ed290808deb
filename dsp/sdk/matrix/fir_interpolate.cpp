// SPDX-License-Identifier: MIT
// FIR interpolator: the filter run over the input with L-1 zeros after each sample.
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "detail/fir_contract.hpp"
#include "detail/fir_kernel.hpp"
#include "detail/loops.hpp"
#include "vector.h"

namespace {

using qel::detail::UnitStride;

uint32_t float_bits(float x) {
  uint32_t u;
  std::memcpy(&u, &x, sizeof u);
  return u;
}

// Whether skipping the inserted zeros gives the full formula's bits.
//
// Every accumulator starts at +0.0f, and a sum is -0 only when both addends
// are -0, so an accumulator is never -0. Adding +0 or -0 to any value other
// than -0 returns that value unchanged (NaN payload included). A product
// c * z with z = +0 or -0 and c finite is +0 or -0. So when every coefficient
// is finite and every inserted zero really is a zero, the products with
// inserted zeros change no accumulator and may be left out. The zeros this
// call appends are exact; the history's zero slots come from the caller's
// buffer and are checked: history entry j holds an inserted zero unless
// numTaps-1-j is a multiple of L.
template <typename S>
bool zeros_skippable(const float* pState, const float* pCoeffs, int numTaps, S L) {
  // Branch-free scans: (bits & exponent) + one exponent step reaches the
  // sign bit only for an all-ones exponent; a zero shifted left by one is 0.
  uint32_t inf_or_nan = 0;
  constexpr int kGroup = qel::detail::kFactorVariants ? 4 : 1;
  qel::detail::for_each_grouped<kGroup>(numTaps, [&](int k) QEL_INLINE {
    inf_or_nan |= (float_bits(pCoeffs[k]) & 0x7f800000u) + 0x00800000u;
  });
  if ((inf_or_nan & 0x80000000u) != 0u) return false;
  // History entry numTaps-1-m holds an inserted zero unless m is a multiple
  // of L; m runs over whole runs of L-1 zeros, then a partial run.
  uint32_t nonzero = 0;
  const float* h = pState + numTaps - 1;
  int m = 1;
  for (; m + L - 1 <= numTaps - 1; m += L) {
    for (int z = 0; z < L - 1; ++z) nonzero |= float_bits(h[-m - z]) << 1;
  }
  for (; m <= numTaps - 1; ++m) nonzero |= float_bits(h[-m]) << 1;
  return nonzero == 0u;
}

// Polyphase form of the full formula. Output m = L*i + p sees input samples
// only at the taps k = k0 + r*L with k0 = (numTaps-1-p) mod L; those samples
// lie L apart in the state, from index p + k0 on. So phase p is a filter with
// taps pCoeffs[k0], pCoeffs[k0+L], ... over the samples alone, at stride L, and
// each output still takes its non-zero products in ascending k. Kept out of
// line: inlined into interpolate, it had its register ring spilled.
template <typename T, typename S>
[[gnu::noinline]] void interpolate_phases(const float* pState, const float* pCoeffs, int numTaps,
                                          S L, int blockSize, T* pDst) {
  int k0 = (numTaps - 1) % L;
  for (int p = 0; p < L; ++p) {
    const int taps = (k0 < numTaps) ? (numTaps - k0 + L - 1) / L : 0;
    // The M33 loop for the float form; the 16-bit form keeps the compact one.
    constexpr bool kTuned = std::is_same_v<T, float>;
    qel::detail::fir_outputs<kTuned ? qel::detail::kWideGroup : 8, 1, qel::detail::kWideBlock,
                             kTuned>(
        pState + p + k0, pCoeffs + k0, taps, blockSize, L,
        [&](int i, float y) QEL_INLINE { qel::detail::store_output(pDst + L * i + p, y); });
    k0 = (k0 == 0) ? L - 1 : k0 - 1;
  }
}

template <typename T, typename S>
void interpolate(const T* pSrc, T* pDst, float* pState, const float* pCoeffs, int numTaps, S L,
                 int blockSize) {
  using namespace qel::detail;
  float* fill = pState + numTaps - 1;
  if constexpr (std::is_same_v<S, int>) {
    for (int i = 0; i < blockSize; ++i) {
      fill[0] = static_cast<float>(pSrc[i]);
      if (L > 1) std::memset(fill + 1, 0, sizeof(float) * static_cast<size_t>(L - 1));
      fill += L;
    }
  } else {
    // A known factor: each sample and its zeros are a few stores at fixed
    // offsets, four samples a pass.
    for_each_grouped<4>(blockSize, [&](int i) QEL_INLINE {
      fill[i * L] = static_cast<float>(pSrc[i]);
      unroll<L - 1>([&]<int z>() QEL_INLINE { fill[i * L + 1 + z] = 0.0f; });
    });
  }
  const int count = L * blockSize;
  if (L > 1 && zeros_skippable(pState, pCoeffs, numTaps, L)) {
    interpolate_phases(pState, pCoeffs, numTaps, L, blockSize, pDst);
  } else {
    // The full formula (a non-finite coefficient or a zero slot that is not
    // zero) is rare: the compact loop.
    fir_outputs<8, 1, kBlockTaps<8, 1>, false>(pState, pCoeffs, numTaps, count, UnitStride{},
                                               [&](int m, float y)
                                                   QEL_INLINE { store_output(pDst + m, y); });
  }
  move_history(pState, count, numTaps);
}

// The common factors are compile-time constants: the loads of the window ring
// take immediate offsets, and the block fill of L-1 zeros becomes a few
// stores instead of a call.
template <typename T>
void interpolate(const T* pSrc, T* pDst, float* pState, const float* pCoeffs, int numTaps, int L,
                 int blockSize) {
  if constexpr (!qel::detail::kFactorVariants) {
    interpolate<T, int>(pSrc, pDst, pState, pCoeffs, numTaps, L, blockSize);
    return;
  }
  switch (L) {
    case 2:
      interpolate(pSrc, pDst, pState, pCoeffs, numTaps, std::integral_constant<int, 2>{},
                  blockSize);
      break;
    case 3:
      interpolate(pSrc, pDst, pState, pCoeffs, numTaps, std::integral_constant<int, 3>{},
                  blockSize);
      break;
    case 4:
      interpolate(pSrc, pDst, pState, pCoeffs, numTaps, std::integral_constant<int, 4>{},
                  blockSize);
      break;
    default:
      interpolate<T, int>(pSrc, pDst, pState, pCoeffs, numTaps, L, blockSize);
      break;
  }
}

}  // namespace

extern "C" {

// y[m] = sum for k = 0..numTaps-1 of pCoeffs[k] * w[m + k] for m = 0..L*blockSize-1,
// w being the history followed by the input with L-1 zeros (one memset each)
// after every sample; every output takes all numTaps products, zeros
// included, in ascending k from 0.0f, and no gain is applied. The whole
// input enters the state first, so pDst may be pSrc when it holds L*blockSize
// elements. The history keeps the inserted zeros.
void qel_flt_fir_interpolate(const float* pSrc, float* pDst, float* pState, const float* pCoeffs,
                             int numTaps, int L, int blockSize) {
  QEL_EXPECT_RATE_FILTER(L, blockSize, L * blockSize, L * blockSize);
  interpolate(pSrc, pDst, pState, pCoeffs, numTaps, L, blockSize);
}

// As above on raw PCM values: a sample enters the state as its integer value
// (unscaled), an output leaves through float_to_int16 (saturate, truncate,
// NaN to 0).
void qel_flt_fir_interpolate_int16(const int16* pSrc, int16* pDst, float* pState,
                                   const float* pCoeffs, int numTaps, int L, int blockSize) {
  QEL_EXPECT_RATE_FILTER(L, blockSize, L * blockSize, L * blockSize);
  interpolate(pSrc, pDst, pState, pCoeffs, numTaps, L, blockSize);
}

}  // extern "C"

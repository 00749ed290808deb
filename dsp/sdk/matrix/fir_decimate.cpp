// SPDX-License-Identifier: MIT
// FIR decimator: only every M-th output of the filter is computed.
#include <type_traits>

#include "detail/fir_contract.hpp"
#include "detail/fir_kernel.hpp"
#include "vector.h"

namespace {

using qel::detail::UnitStride;

// Outputs for any M, four at a time: each coefficient is loaded once for the
// four windows, which lie M samples apart. Used where M is too large for the
// windows of a group to share registers.
template <typename Store>
void decimate_any(const float* w, const float* c, int taps, int M, int count, Store&& store) {
  int n = 0;
  for (; n + 4 <= count; n += 4) {
    const float* px0 = w + n * M;
    const float* px1 = px0 + M;
    const float* px2 = px1 + M;
    const float* px3 = px2 + M;
    float acc0 = 0.0f, acc1 = 0.0f, acc2 = 0.0f, acc3 = 0.0f;
    for (int k = 0; k < taps; ++k) {
      const float c0 = c[k];
      qel::detail::mac_here(acc0, c0, px0[k]);
      qel::detail::mac_here(acc1, c0, px1[k]);
      qel::detail::mac_here(acc2, c0, px2[k]);
      qel::detail::mac_here(acc3, c0, px3[k]);
    }
    store(n, acc0);
    store(n + 1, acc1);
    store(n + 2, acc2);
    store(n + 3, acc3);
  }
  for (; n < count; ++n) store(n, qel::detail::fir_dot(w + n * M, c, taps, UnitStride{}));
}

// Small factors keep a group's windows in a ring of registers (see
// fir_group): the group size is the largest whose ring, accumulators and
// coefficient fit the 32 single-precision registers.
template <typename T>
void decimate(const T* pSrc, T* pDst, float* pState, const float* pCoeffs, int numTaps, int M,
              int blockSize) {
  using namespace qel::detail;
  const int outBlockSize = blockSize / M;
  const int appended = M * outBlockSize;
  append(pSrc, pState + numTaps - 1, appended);
  auto store = [&](int n, float y) QEL_INLINE { store_output(pDst + n, y); };
  if constexpr (!kFactorVariants) {
    decimate_any(pState, pCoeffs, numTaps, M, outBlockSize, store);
    move_history(pState, appended, numTaps);
    return;
  }
  // The M33 loop for the float form; the 16-bit form keeps the compact one.
  constexpr bool kTuned = std::is_same_v<T, float>;
  switch (M) {
    case 1:
      fir_outputs<8, 1, kBlockTaps<8, 1>, kTuned>(pState, pCoeffs, numTaps, outBlockSize,
                                                  UnitStride{}, store);
      break;
    case 2:
      fir_outputs<8, 2, kBlockTaps<8, 2>, kTuned>(pState, pCoeffs, numTaps, outBlockSize,
                                                  UnitStride{}, store);
      break;
    case 3:
      fir_outputs<6, 3, kBlockTaps<6, 3>, kTuned>(pState, pCoeffs, numTaps, outBlockSize,
                                                  UnitStride{}, store);
      break;
    case 4:
      fir_outputs<5, 4, kBlockTaps<5, 4>, kTuned>(pState, pCoeffs, numTaps, outBlockSize,
                                                  UnitStride{}, store);
      break;
    default:
      decimate_any(pState, pCoeffs, numTaps, M, outBlockSize, store);
      break;
  }
  move_history(pState, appended, numTaps);
}

}  // namespace

extern "C" {

// y[n] = sum for k = 0..numTaps-1 of pCoeffs[k] * w[n*M + k], w being the
// history followed by the first M*outBlockSize inputs; outBlockSize =
// blockSize / M outputs, aligned on inputs 0, M, 2M, ...; the last
// blockSize mod M inputs are ignored and never reach the history. One
// accumulator per output from 0.0f, taps ascending. The inputs enter the state
// before any output is stored, so pDst may be pSrc.
void qel_flt_fir_decimate(const float* pSrc, float* pDst, float* pState, const float* pCoeffs,
                          int numTaps, int M, int blockSize) {
  QEL_EXPECT_RATE_FILTER(M, M * (blockSize / M), blockSize / M, M * (blockSize / M));
  decimate(pSrc, pDst, pState, pCoeffs, numTaps, M, blockSize);
}

// As above on raw PCM values: a sample enters the state as its integer value
// (unscaled), an output leaves through float_to_int16 (saturate, truncate,
// NaN to 0).
void qel_flt_fir_decimate_int16(const int16* pSrc, int16* pDst, float* pState, const float* pCoeffs,
                                int numTaps, int M, int blockSize) {
  QEL_EXPECT_RATE_FILTER(M, M * (blockSize / M), blockSize / M, M * (blockSize / M));
  decimate(pSrc, pDst, pState, pCoeffs, numTaps, M, blockSize);
}

}  // extern "C"

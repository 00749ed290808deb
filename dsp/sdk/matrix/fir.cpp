// SPDX-License-Identifier: MIT
// Block FIR filter over a caller-owned state buffer.
#include "detail/fir_contract.hpp"
#include "detail/fir_kernel.hpp"
#include "vector.h"

using qel::detail::UnitStride;

extern "C" {

// y[n] = sum for k = 0..numTaps-1 of pCoeffs[k] * w[n + k], where w is the
// history (numTaps-1 samples, oldest first) followed by the block; one
// accumulator per output from 0.0f, taps ascending. blockSize outputs; the
// whole block enters the state before any output is stored, so pDst may be
// pSrc. Afterwards the last numTaps-1 samples of w become the history.
void qel_flt_fir(const float* pSrc, float* pDst, float* pState, const float* pCoeffs, int numTaps,
                 int blockSize) {
  QEL_EXPECT(numTaps >= 1, "numTaps >= 1");
  QEL_EXPECT(blockSize >= 0, "blockSize >= 0");
  QEL_EXPECT_FIR_BUFFERS(blockSize, blockSize, blockSize);
  qel::detail::append(pSrc, pState + numTaps - 1, blockSize);
  qel::detail::fir_outputs<qel::detail::kWideGroup, 1, qel::detail::kWideBlock>(
      pState, pCoeffs, numTaps, blockSize, UnitStride{},
      [&](int n, float y) QEL_INLINE { pDst[n] = y; });
  qel::detail::move_history(pState, blockSize, numTaps);
}

}  // extern "C"

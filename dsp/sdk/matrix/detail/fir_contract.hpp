// SPDX-License-Identifier: MIT
// The promises every filter call makes about its buffers, checked only in the
// QEL_CHECKED build.
#pragma once

#include "detail/contract.hpp"

// Checks, in the exported filter that expands it (so a broken promise names
// that function), the buffers of a call that reads in_count samples of pSrc,
// writes out_count outputs to pDst and appends `appended` samples to the
// state: what a count needs is not null, pDst is pSrc or lies apart from it,
// and the state lies apart from every other array. The counts are checked
// first: the macro assumes numTaps >= 1 and non-negative counts.
#define QEL_EXPECT_FIR_BUFFERS(in_count, out_count, appended)                                  \
  QEL_EXPECT((out_count) == 0 || (pSrc != nullptr && pDst != nullptr && pCoeffs != nullptr),   \
             "pSrc, pDst and pCoeffs are not null");                                           \
  QEL_EXPECT(numTaps - 1 + (appended) == 0 || pState != nullptr, "pState is not null");        \
  QEL_EXPECT(qel::detail::same_or_disjoint(pDst, qel::detail::bytes(pDst, out_count), pSrc,    \
                                           qel::detail::bytes(pSrc, in_count)),                \
             "pDst is pSrc or does not overlap it");                                           \
  QEL_EXPECT(qel::detail::disjoint(pSrc, qel::detail::bytes(pSrc, in_count), pState,           \
                                   qel::detail::float_bytes(numTaps - 1 + (appended))),        \
             "pSrc does not overlap pState");                                                  \
  QEL_EXPECT(qel::detail::disjoint(pDst, qel::detail::bytes(pDst, out_count), pState,          \
                                   qel::detail::float_bytes(numTaps - 1 + (appended))),        \
             "pDst does not overlap pState");                                                  \
  QEL_EXPECT(qel::detail::floats_disjoint(pCoeffs, numTaps, pState, numTaps - 1 + (appended)), \
             "pCoeffs does not overlap pState");                                               \
  QEL_EXPECT(qel::detail::disjoint(pDst, qel::detail::bytes(pDst, out_count), pCoeffs,         \
                                   qel::detail::float_bytes(numTaps)),                         \
             "pDst does not overlap pCoeffs")

// The whole check of a rate-changing filter call: taps, the factor (M or L, named
// in the message), the block size, then the buffers.
#define QEL_EXPECT_RATE_FILTER(factor, in_count, out_count, appended) \
  QEL_EXPECT(numTaps >= 1, "numTaps >= 1");                           \
  QEL_EXPECT((factor) >= 1, #factor " >= 1");                         \
  QEL_EXPECT(blockSize >= 0, "blockSize >= 0");                       \
  QEL_EXPECT_FIR_BUFFERS(in_count, out_count, appended)

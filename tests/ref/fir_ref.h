// SPDX-License-Identifier: MIT
// Plain references for the FIR filters: append, one output at a time, move the history.
#pragma once

#include "vector.h"

namespace qel::ref {

void fir(const float* pSrc, float* pDst, float* pState, const float* pCoeffs, int numTaps,
         int blockSize);
void fir_decimate(const float* pSrc, float* pDst, float* pState, const float* pCoeffs, int numTaps,
                  int M, int blockSize);
void fir_decimate_int16(const int16_t* pSrc, int16_t* pDst, float* pState, const float* pCoeffs,
                        int numTaps, int M, int blockSize);
void fir_interpolate(const float* pSrc, float* pDst, float* pState, const float* pCoeffs,
                     int numTaps, int L, int blockSize);
void fir_interpolate_int16(const int16_t* pSrc, int16_t* pDst, float* pState, const float* pCoeffs,
                           int numTaps, int L, int blockSize);

}  // namespace qel::ref

// SPDX-License-Identifier: MIT
#include "ref/fir_ref.h"

#include "ref/pcm_ref.h"

namespace qel::ref {
namespace {

// y = sum over k ascending of c[k] * w[k], one accumulator from 0.0.
float dot(const float* c, const float* w, int numTaps) {
  float acc = 0.0f;
  for (int k = 0; k < numTaps; ++k) acc = acc + c[k] * w[k];
  return acc;
}

// The last numTaps-1 entries of the window sequence become the history.
void move_history(float* pState, int appended, int numTaps) {
  for (int j = 0; j < numTaps - 1; ++j) pState[j] = pState[appended + j];
}

float as_float(float x) { return x; }
float as_float(int16_t x) { return static_cast<float>(x); }
void store(float* p, float y) { *p = y; }
void store(int16_t* p, float y) { *p = to_int16(y); }

template <typename T>
void decimate(const T* pSrc, T* pDst, float* pState, const float* pCoeffs, int numTaps, int M,
              int blockSize) {
  const int outBlockSize = blockSize / M;
  for (int i = 0; i < M * outBlockSize; ++i) pState[numTaps - 1 + i] = as_float(pSrc[i]);
  for (int n = 0; n < outBlockSize; ++n) store(pDst + n, dot(pCoeffs, pState + n * M, numTaps));
  move_history(pState, M * outBlockSize, numTaps);
}

template <typename T>
void interpolate(const T* pSrc, T* pDst, float* pState, const float* pCoeffs, int numTaps, int L,
                 int blockSize) {
  for (int i = 0; i < blockSize; ++i) {
    pState[numTaps - 1 + L * i] = as_float(pSrc[i]);
    for (int z = 1; z < L; ++z) pState[numTaps - 1 + L * i + z] = 0.0f;
  }
  for (int m = 0; m < L * blockSize; ++m) store(pDst + m, dot(pCoeffs, pState + m, numTaps));
  move_history(pState, L * blockSize, numTaps);
}

}  // namespace

void fir(const float* pSrc, float* pDst, float* pState, const float* pCoeffs, int numTaps,
         int blockSize) {
  for (int i = 0; i < blockSize; ++i) pState[numTaps - 1 + i] = pSrc[i];
  for (int n = 0; n < blockSize; ++n) pDst[n] = dot(pCoeffs, pState + n, numTaps);
  move_history(pState, blockSize, numTaps);
}

void fir_decimate(const float* pSrc, float* pDst, float* pState, const float* pCoeffs, int numTaps,
                  int M, int blockSize) {
  decimate(pSrc, pDst, pState, pCoeffs, numTaps, M, blockSize);
}

void fir_decimate_int16(const int16_t* pSrc, int16_t* pDst, float* pState, const float* pCoeffs,
                        int numTaps, int M, int blockSize) {
  decimate(pSrc, pDst, pState, pCoeffs, numTaps, M, blockSize);
}

void fir_interpolate(const float* pSrc, float* pDst, float* pState, const float* pCoeffs,
                     int numTaps, int L, int blockSize) {
  interpolate(pSrc, pDst, pState, pCoeffs, numTaps, L, blockSize);
}

void fir_interpolate_int16(const int16_t* pSrc, int16_t* pDst, float* pState, const float* pCoeffs,
                           int numTaps, int L, int blockSize) {
  interpolate(pSrc, pDst, pState, pCoeffs, numTaps, L, blockSize);
}

}  // namespace qel::ref

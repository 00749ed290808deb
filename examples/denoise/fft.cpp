// SPDX-License-Identifier: MIT
// Radix-4 complex FFT of 256 points and the real-signal split around it.
//
// Forward: decimation in frequency, natural order in, base-4 digit-reversed
// order out, read back through the digit-reversal table by the split.
// Inverse: the merge writes in digit-reversed order, then decimation in time
// gives natural order in place. Neither needs a separate permutation pass.
#include "fft.h"

#include <cstdint>

namespace denoise {
namespace {

constexpr int kN = kFft / 2;  // complex points

// cos(2 pi m / kFft) for m = 0..kFft/4 by its Taylor series in double, at
// compile time only: constant folding rounds the same for both compilers.
constexpr double quarter_cos(int m) {
  const double x = 6.283185307179586476925 * m / kFft;
  double term = 1.0, sum = 1.0;
  for (int k = 2; k <= 40; k += 2) {
    term *= -x * x / (k * (k - 1));
    sum += term;
  }
  return sum;
}

constexpr std::array<float, kFft / 4 + 1> kQuarter = [] {
  std::array<float, kFft / 4 + 1> q{};
  for (int m = 0; m < kFft / 4; ++m) q[m] = static_cast<float>(quarter_cos(m));
  q[kFft / 4] = 0.0f;  // the series leaves 6e-17 there: the sines of 0 and pi must be 0
  return q;
}();

struct Cpx {
  float re, im;
};

// e^(-2 pi i m / kFft), from the quarter wave by symmetry.
constexpr Cpx unit(int m) {
  m %= kFft;
  const int quad = m / (kFft / 4), r = m % (kFft / 4);
  const float c = kQuarter[r], s = kQuarter[kFft / 4 - r];  // cos, sin of the remainder
  switch (quad) {
    case 0:
      return {c, -s};
    case 1:
      return {-s, -c};
    case 2:
      return {-c, s};
    default:
      return {s, c};
  }
}

// A stage over blocks of len points multiplies branch r of butterfly j by W_len^(r j),
// r = 1..3; W_len = e^(-2 pi i / len) = unit(kFft / len).
struct Twiddles {
  Cpx w1, w2, w3;
};
constexpr int kStageTw = kN / 4 + kN / 16 + kN / 64;  // stages of 256, 64, 16 points
constexpr std::array<Twiddles, kStageTw> kTw = [] {
  std::array<Twiddles, kStageTw> t{};
  int at = 0;
  for (int len = kN; len >= 16; len /= 4) {
    const int step = kFft / len;
    for (int j = 0; j < len / 4; ++j)
      t[at++] = {unit(step * j), unit(2 * step * j), unit(3 * step * j)};
  }
  return t;
}();
// (The 4-point stage of the inverse gets the 16-point table; its butterfly 0
// reads no twiddles.)
constexpr const Twiddles* stage_twiddles(int len) {
  return len == kN ? &kTw[0] : len == kN / 4 ? &kTw[kN / 4] : &kTw[kN / 4 + kN / 16];
}

// W_kFft^k for the split and the merge, k = 0..kN/2.
constexpr std::array<Cpx, kN / 2 + 1> kSplitTw = [] {
  std::array<Cpx, kN / 2 + 1> t{};
  for (int k = 0; k <= kN / 2; ++k) t[k] = unit(k);
  return t;
}();

// Base-4 digit reversal of 0..255.
constexpr std::array<uint8_t, kN> kRev = [] {
  std::array<uint8_t, kN> r{};
  for (int p = 0; p < kN; ++p) {
    r[p] = static_cast<uint8_t>(((p & 3) << 6) | ((p & 12) << 2) | ((p & 48) >> 2) | (p >> 6));
  }
  return r;
}();

// z * w and z * conj(w), on interleaved values.
inline void mul(float& re, float& im, Cpx w) {
  const float r = re * w.re - im * w.im;
  im = re * w.im + im * w.re;
  re = r;
}
inline void mul_conj(float& re, float& im, Cpx w) {
  const float r = re * w.re + im * w.im;
  im = im * w.re - re * w.im;
  re = r;
}

// One decimation-in-frequency stage: in every block of len points, butterfly j
// takes points j + m q (q = len / 4, m = 0..3) and gives
//   y_r = (sum_m x_m (-i)^(r m)) W_len^(r j),  written back to j + r q.
// src may be dst.
void dif_stage(const float* src, float* dst, int len) {
  const int q = len / 4;
  const Twiddles* tw = stage_twiddles(len);
  for (int base = 0; base < kN; base += len) {
    for (int j = 0; j < q; ++j) {
      const int a = 2 * (base + j), b = a + 2 * q, c = b + 2 * q, d = c + 2 * q;
      const float t0r = src[a] + src[c], t0i = src[a + 1] + src[c + 1];
      const float t1r = src[a] - src[c], t1i = src[a + 1] - src[c + 1];
      const float t2r = src[b] + src[d], t2i = src[b + 1] + src[d + 1];
      const float t3r = src[b] - src[d], t3i = src[b + 1] - src[d + 1];
      float y1r = t1r + t3i, y1i = t1i - t3r;  // t1 - i t3
      float y2r = t0r - t2r, y2i = t0i - t2i;
      float y3r = t1r - t3i, y3i = t1i + t3r;  // t1 + i t3
      mul(y1r, y1i, tw[j].w1);
      mul(y2r, y2i, tw[j].w2);
      mul(y3r, y3i, tw[j].w3);
      dst[a] = t0r + t2r;
      dst[a + 1] = t0i + t2i;
      dst[b] = y1r;
      dst[b + 1] = y1i;
      dst[c] = y2r;
      dst[c + 1] = y2i;
      dst[d] = y3r;
      dst[d + 1] = y3i;
    }
  }
}

// The 4-point butterflies of the last forward stage, whose twiddles are all 1.
void dif_last(float* x) {
  for (int a = 0; a < 2 * kN; a += 8) {
    const float t0r = x[a] + x[a + 4], t0i = x[a + 1] + x[a + 5];
    const float t1r = x[a] - x[a + 4], t1i = x[a + 1] - x[a + 5];
    const float t2r = x[a + 2] + x[a + 6], t2i = x[a + 3] + x[a + 7];
    const float t3r = x[a + 2] - x[a + 6], t3i = x[a + 3] - x[a + 7];
    x[a] = t0r + t2r;
    x[a + 1] = t0i + t2i;
    x[a + 2] = t1r + t3i;
    x[a + 3] = t1i - t3r;
    x[a + 4] = t0r - t2r;
    x[a + 5] = t0i - t2i;
    x[a + 6] = t1r - t3i;
    x[a + 7] = t1i + t3r;
  }
}

// The inverse's butterfly, decimation in time with conjugate twiddles: the
// points x_m = x[a + m q2], m = 0..3, are first multiplied by conj(w_m), then
//   X_r = sum_m x_m i^(r m),  written back to x[a + r q2].
// Without twiddles (Tw false) every w_m is 1.
template <bool Tw>
inline void dit_butterfly(float* x, int a, int q2, const Twiddles& w) {
  const int b = a + q2, c = b + q2, d = c + q2;
  float t1r = x[b], t1i = x[b + 1], t2r = x[c], t2i = x[c + 1], t3r = x[d], t3i = x[d + 1];
  if (Tw) {
    mul_conj(t1r, t1i, w.w1);
    mul_conj(t2r, t2i, w.w2);
    mul_conj(t3r, t3i, w.w3);
  }
  const float u0r = x[a] + t2r, u0i = x[a + 1] + t2i;
  const float u1r = x[a] - t2r, u1i = x[a + 1] - t2i;
  const float u2r = t1r + t3r, u2i = t1i + t3i;
  const float u3r = t1r - t3r, u3i = t1i - t3i;
  x[a] = u0r + u2r;
  x[a + 1] = u0i + u2i;
  x[b] = u1r - u3i;  // u1 + i u3
  x[b + 1] = u1i + u3r;
  x[c] = u0r - u2r;
  x[c + 1] = u0i - u2i;
  x[d] = u1r + u3i;  // u1 - i u3
  x[d + 1] = u1i - u3r;
}

// The inverse's stages: in every block of len points, butterfly j takes the
// points j + m len / 4 and w_m = W_len^(m j); butterfly 0 multiplies by nothing
// (that saved 7 % of the inverse's estimated cycles on the M33).
void dit_stage(float* x, int len) {
  const int q2 = len / 2;  // a quarter block, in floats
  const Twiddles* tw = stage_twiddles(len);
  for (int base = 0; base < 2 * kN; base += 2 * len) {
    dit_butterfly<false>(x, base, q2, tw[0]);
    for (int j = 1; j < len / 4; ++j) dit_butterfly<true>(x, base + 2 * j, q2, tw[j]);
  }
}

}  // namespace

void RealFft::forward(const float* time, float* re, float* im) {
  float* z = work_.data();
  dif_stage(time, z, kN);
  dif_stage(z, z, kN / 4);
  dif_stage(z, z, kN / 16);
  dif_last(z);
  // Z = E + i O, where E and O are the spectra of the even and odd samples;
  // X[k] = E[k] + W^k O[k] and X[kN - k] = conj(E[k] - W^k O[k]), with
  // E[k] = (Z[k] + conj Z[kN - k]) / 2 and O[k] = (Z[k] - conj Z[kN - k]) / 2i.
  re[0] = z[0] + z[1];
  im[0] = 0.0f;
  re[kN] = z[0] - z[1];
  im[kN] = 0.0f;
  for (int k = 1; k <= kN / 2; ++k) {
    const float* zk = &z[2 * kRev[k]];
    const float* zm = &z[2 * kRev[kN - k]];
    const float er = 0.5f * (zk[0] + zm[0]), ei = 0.5f * (zk[1] - zm[1]);
    float o_r = 0.5f * (zk[1] + zm[1]), o_i = 0.5f * (zm[0] - zk[0]);
    mul(o_r, o_i, kSplitTw[k]);
    re[k] = er + o_r;
    im[k] = ei + o_i;
    re[kN - k] = er - o_r;
    im[kN - k] = o_i - ei;
  }
}

void RealFft::inverse(const float* re, const float* im, float* time) {
  // The split run backwards, doubled (2 E + 2 i O): the unscaled 256-point
  // inverse then gives 512 times the signal, as a 512-point one would.
  time[0] = re[0] + re[kN];  // digit reversal keeps 0 in place
  time[1] = re[0] - re[kN];
  for (int k = 1; k <= kN / 2; ++k) {
    const int m = kN - k;
    const float er = re[k] + re[m], ei = im[k] - im[m];
    float o_r = re[k] - re[m], o_i = im[k] + im[m];
    mul_conj(o_r, o_i, kSplitTw[k]);
    float* zk = &time[2 * kRev[k]];
    float* zm = &time[2 * kRev[m]];
    zk[0] = er - o_i;
    zk[1] = ei + o_r;
    zm[0] = er + o_i;  // k = kN / 2 writes its one point twice, alike
    zm[1] = o_r - ei;
  }
  for (int len = 4; len <= kN; len *= 4) dit_stage(time, len);
}

}  // namespace denoise

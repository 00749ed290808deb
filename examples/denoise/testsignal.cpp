// SPDX-License-Identifier: MIT
// Generation of the embedded default input: harmonic bursts, pauses, noise.
// All of it in float with our own sines (trig.h), so the device makes the very
// samples the host makes.
#include "testsignal.h"

#include <algorithm>
#include <cmath>

#include "pipeline.h"
#include "trig.h"

namespace denoise {
namespace {

constexpr float kFs = static_cast<float>(kInRate);
constexpr float kPole = 0.6f;
constexpr int kMaxHarmonics = 40;

// xorshift64*: a fixed, fully specified generator (the standard distributions
// are not specified, so they could differ between library versions).
class Rng {
 public:
  explicit Rng(uint64_t seed) : s_(seed ? seed : 1) {}
  float uniform() {  // [0, 1), 24 random bits
    s_ ^= s_ >> 12;
    s_ ^= s_ << 25;
    s_ ^= s_ >> 27;
    return static_cast<float>((s_ * 0x2545F4914F6CDD1DULL) >> 40) * 0x1.0p-24f;
  }
  float between(float lo, float hi) { return lo + (hi - lo) * uniform(); }
  // Near-Gaussian with unit variance: four uniforms sum to variance 4/12.
  float gauss() { return (uniform() + uniform() + uniform() + uniform() - 2.0f) * 1.73205081f; }

 private:
  uint64_t s_;
};

// Magnitude response of a resonance at f0 with bandwidth bw, 1 at its peak.
float resonance(float f, float f0, float bw) {
  const float x = (f - f0) / (0.5f * bw);
  return 1.0f / std::sqrt(1.0f + x * x);
}

// Sum over the power of a long signal: blocks of 1024 squares, then the blocks,
// so the running sum does not swallow the small terms.
class PowerSum {
 public:
  void add(float v) {
    block_ += v * v;
    if (++n_ % 1024 == 0) flush();
  }
  float total() {
    flush();
    return total_;
  }

 private:
  void flush() {
    total_ += block_;
    block_ = 0.0f;
  }
  float block_ = 0.0f, total_ = 0.0f;
  int n_ = 0;
};

void add_burst(std::vector<float>& out, size_t start, size_t len, Rng& rng) {
  const float f_start = rng.between(95.0f, 230.0f);
  const float f_end = f_start * rng.between(0.8f, 1.2f);
  const float f1 = rng.between(300.0f, 800.0f), f2 = rng.between(900.0f, 2300.0f);
  const float level = rng.between(0.5f, 1.0f);
  SinCos phase[kMaxHarmonics];
  for (SinCos& p : phase) p = sincos_turns(rng.uniform());
  const float attack = 0.03f * kFs, release = 0.08f * kFs;
  float f0_turns = 0.0f;  // the fundamental's phase, kept in [0, 1)
  for (size_t i = 0; i < len && start + i < out.size(); ++i) {
    const float t = static_cast<float>(i) / static_cast<float>(len);
    const float f0 = f_start + (f_end - f_start) * t;
    f0_turns += f0 / kFs;
    f0_turns -= std::floor(f0_turns);
    const float di = static_cast<float>(i);
    float env = 1.0f;
    if (di < attack) env = 0.5f - 0.5f * cos_turns(0.5f * di / attack);
    const float left = static_cast<float>(len - i);
    if (left < release) env = std::min(env, 0.5f - 0.5f * cos_turns(0.5f * left / release));
    env *= level * (1.0f + 0.15f * sin_turns(4.0f * di / kFs));  // slow tremor
    // Harmonic k is sin(k p + phase_k): e^(i k p) by repeated multiplication.
    const SinCos fund = sincos_turns(f0_turns);
    SinCos h = fund;
    float s = 0.0f;
    for (int k = 1; k <= kMaxHarmonics && static_cast<float>(k) * f0 < 4000.0f; ++k) {
      const float fk = static_cast<float>(k) * f0;
      const float shape =
          (resonance(fk, f1, 120.0f) + 0.6f * resonance(fk, f2, 180.0f)) / static_cast<float>(k);
      s += shape * (h.sin * phase[k - 1].cos + h.cos * phase[k - 1].sin);
      h = {h.sin * fund.cos + h.cos * fund.sin, h.cos * fund.cos - h.sin * fund.sin};
    }
    out[start + i] += env * s;
  }
}

}  // namespace

TestSignal make_test_signal(double seconds, double snr_db, uint64_t seed) {
  const size_t n = static_cast<size_t>(std::max(0.0, seconds) * kInRate);
  Rng rng(seed);
  std::vector<float> clean(n, 0.0f);
  size_t pos = static_cast<size_t>(0.3f * kFs);  // starts in a pause
  while (pos < n) {
    const size_t len = static_cast<size_t>(rng.between(0.25f, 0.7f) * kFs);
    add_burst(clean, pos, len, rng);
    pos += len + static_cast<size_t>(rng.between(0.15f, 0.45f) * kFs);
  }
  // Speech peaks near -10 dBFS.
  float peak = 0.0f;
  for (float v : clean) peak = std::max(peak, std::fabs(v));
  const float to_pcm = (peak > 0.0f) ? 0.3f * 32768.0f / peak : 0.0f;
  PowerSum clean_power, noise_power;
  for (float& v : clean) {
    v *= to_pcm;
    clean_power.add(v);
  }
  // Noise: a one-pole low-pass (corner near 1.2 kHz) of white noise, plus a
  // quarter of its level in white noise, so most of it shares the speech band.
  std::vector<float> noise(n);
  float lp = 0.0f;
  for (size_t i = 0; i < n; ++i) {
    lp = kPole * lp + (1.0f - kPole) * rng.gauss();
    noise[i] = lp + 0.1f * rng.gauss();
    noise_power.add(noise[i]);
  }
  const float ln10 = 2.30258509f;
  const float want = clean_power.total() / exp_float(static_cast<float>(snr_db) * ln10 / 10.0f);
  const float np = noise_power.total();
  const float g = (np > 0.0f) ? std::sqrt(want / np) : 0.0f;
  TestSignal sig;
  sig.clean.assign(clean.begin(), clean.end());
  sig.noisy.resize(n);
  for (size_t i = 0; i < n; ++i) {
    const float v = std::round(clean[i] + g * noise[i]);
    sig.noisy[i] = static_cast<int16_t>(std::clamp(v, -32768.0f, 32767.0f));
  }
  return sig;
}

}  // namespace denoise

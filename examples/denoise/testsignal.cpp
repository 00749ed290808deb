// SPDX-License-Identifier: MIT
// Generation of the embedded default input: harmonic bursts, pauses, noise.
#include "testsignal.h"

#include <algorithm>
#include <cmath>

#include "pipeline.h"

namespace denoise {
namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kPole = 0.6;

// xorshift64*: a fixed, fully specified generator (the standard distributions
// are not specified, so they could differ between library versions).
class Rng {
 public:
  explicit Rng(uint64_t seed) : s_(seed ? seed : 1) {}
  double uniform() {  // [0, 1)
    s_ ^= s_ >> 12;
    s_ ^= s_ << 25;
    s_ ^= s_ >> 27;
    return static_cast<double>((s_ * 0x2545F4914F6CDD1DULL) >> 11) * 0x1.0p-53;
  }
  double between(double lo, double hi) { return lo + (hi - lo) * uniform(); }
  double gauss() {  // Box-Muller
    const double u = 1.0 - uniform();
    return std::sqrt(-2.0 * std::log(u)) * std::cos(2.0 * kPi * uniform());
  }

 private:
  uint64_t s_;
};

// Magnitude response of a resonance at f0 with bandwidth bw, 1 at its peak.
double resonance(double f, double f0, double bw) {
  const double x = (f - f0) / (0.5 * bw);
  return 1.0 / std::sqrt(1.0 + x * x);
}

void add_burst(std::vector<double>& out, size_t start, size_t len, Rng& rng) {
  const double fs = kInRate;
  const double f_start = rng.between(95.0, 230.0);
  const double f_end = f_start * rng.between(0.8, 1.2);
  const double f1 = rng.between(300.0, 800.0), f2 = rng.between(900.0, 2300.0);
  const double level = rng.between(0.5, 1.0);
  constexpr int kMaxHarmonics = 40;
  double phase[kMaxHarmonics];
  for (double& p : phase) p = rng.between(0.0, 2.0 * kPi);
  const double attack = 0.03 * fs, release = 0.08 * fs;
  double f0_phase = 0.0;
  for (size_t i = 0; i < len && start + i < out.size(); ++i) {
    const double t = static_cast<double>(i) / static_cast<double>(len);
    const double f0 = f_start + (f_end - f_start) * t;
    f0_phase += 2.0 * kPi * f0 / fs;
    const double di = static_cast<double>(i);
    double env = 1.0;
    if (di < attack) env = 0.5 - 0.5 * std::cos(kPi * di / attack);
    const double left = static_cast<double>(len - i);
    if (left < release) env = std::min(env, 0.5 - 0.5 * std::cos(kPi * left / release));
    env *= level * (1.0 + 0.15 * std::sin(2.0 * kPi * 4.0 * di / fs));  // slow tremor
    double s = 0.0;
    for (int k = 1; k <= kMaxHarmonics && k * f0 < 4000.0; ++k) {
      const double fk = k * f0;
      const double shape = (resonance(fk, f1, 120.0) + 0.6 * resonance(fk, f2, 180.0)) / k;
      s += shape * std::sin(k * f0_phase + phase[k - 1]);
    }
    out[start + i] += env * s;
  }
}

}  // namespace

TestSignal make_test_signal(double seconds, double snr_db, uint64_t seed) {
  const size_t n = static_cast<size_t>(std::max(0.0, seconds) * kInRate);
  Rng rng(seed);
  TestSignal sig;
  sig.clean.assign(n, 0.0);
  size_t pos = static_cast<size_t>(0.3 * kInRate);  // starts in a pause
  while (pos < n) {
    const size_t len = static_cast<size_t>(rng.between(0.25, 0.7) * kInRate);
    add_burst(sig.clean, pos, len, rng);
    pos += len + static_cast<size_t>(rng.between(0.15, 0.45) * kInRate);
  }
  // Speech peaks near -10 dBFS.
  double peak = 0.0, clean_power = 0.0;
  for (double v : sig.clean) peak = std::max(peak, std::fabs(v));
  const double to_pcm = (peak > 0.0) ? 0.3 * 32768.0 / peak : 0.0;
  for (double& v : sig.clean) {
    v *= to_pcm;
    clean_power += v * v;
  }
  // Noise: a one-pole low-pass (corner near 1.2 kHz) of white noise, plus a
  // quarter of its level in white noise, so most of it shares the speech band.
  std::vector<double> noise(n);
  double lp = 0.0, noise_power = 0.0;
  for (size_t i = 0; i < n; ++i) {
    lp = kPole * lp + (1.0 - kPole) * rng.gauss();
    noise[i] = lp + 0.1 * rng.gauss();
    noise_power += noise[i] * noise[i];
  }
  const double want = (n > 0) ? clean_power / std::pow(10.0, snr_db / 10.0) : 0.0;
  const double g = (noise_power > 0.0) ? std::sqrt(want / noise_power) : 0.0;
  sig.noisy.resize(n);
  for (size_t i = 0; i < n; ++i) {
    const double v = std::round(sig.clean[i] + g * noise[i]);
    sig.noisy[i] = static_cast<int16_t>(std::clamp(v, -32768.0, 32767.0));
  }
  return sig;
}

}  // namespace denoise

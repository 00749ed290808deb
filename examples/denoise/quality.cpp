// SPDX-License-Identifier: MIT
// Speech quality measures: SNR, segmental SNR, log-spectral distance and a
// short-time objective intelligibility score. Host-only, in double precision.
#include "quality.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numeric>

namespace denoise {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kSilenceDb = 40.0;  // frames this far below the loudest clean frame are pauses

using Cpx = std::complex<double>;

// In-place iterative radix-2 FFT; a.size() is a power of two.
void fft(std::vector<Cpx>& a) {
  const size_t n = a.size();
  for (size_t i = 1, j = 0; i < n; ++i) {
    size_t bit = n >> 1;
    for (; j & bit; bit >>= 1) j ^= bit;
    j ^= bit;
    if (i < j) std::swap(a[i], a[j]);
  }
  for (size_t len = 2; len <= n; len <<= 1) {
    const Cpx w1 = std::polar(1.0, -2.0 * kPi / static_cast<double>(len));
    for (size_t i = 0; i < n; i += len) {
      Cpx w = 1.0;
      for (size_t k = 0; k < len / 2; ++k, w *= w1) {
        const Cpx u = a[i + k], v = a[i + k + len / 2] * w;
        a[i + k] = u + v;
        a[i + k + len / 2] = u - v;
      }
    }
  }
}

// Hann window of n points without its zero end points (both ends inside the frame).
std::vector<double> hann(size_t n) {
  std::vector<double> w(n);
  for (size_t i = 0; i < n; ++i) {
    w[i] =
        0.5 - 0.5 * std::cos(2.0 * kPi * static_cast<double>(i + 1) / static_cast<double>(n + 1));
  }
  return w;
}

// Power spectra (bins 0..nfft/2) of frames of `len` samples every `hop`.
std::vector<std::vector<double>> power_frames(const std::vector<double>& x, size_t len, size_t hop,
                                              size_t nfft) {
  const std::vector<double> w = hann(len);
  std::vector<std::vector<double>> out;
  std::vector<Cpx> buf(nfft);
  for (size_t at = 0; at + len <= x.size(); at += hop) {
    std::fill(buf.begin(), buf.end(), Cpx{});
    for (size_t i = 0; i < len; ++i) buf[i] = x[at + i] * w[i];
    fft(buf);
    std::vector<double> p(nfft / 2 + 1);
    for (size_t k = 0; k < p.size(); ++k) p[k] = std::norm(buf[k]);
    out.push_back(std::move(p));
  }
  return out;
}

double energy(const double* x, size_t n, const double* w = nullptr) {
  double e = 0.0;
  for (size_t i = 0; i < n; ++i) {
    const double v = w ? x[i] * w[i] : x[i];
    e += v * v;
  }
  return e;
}

// Frames (of `len` every `hop`) whose clean energy is within kSilenceDb of the loudest.
std::vector<bool> speech_frames(const std::vector<double>& clean, size_t len, size_t hop,
                                const double* w = nullptr) {
  std::vector<double> e;
  for (size_t at = 0; at + len <= clean.size(); at += hop) e.push_back(energy(&clean[at], len, w));
  const double top = e.empty() ? 0.0 : *std::max_element(e.begin(), e.end());
  std::vector<bool> keep(e.size());
  for (size_t i = 0; i < e.size(); ++i)
    keep[i] = top > 0.0 && e[i] > top * std::pow(10.0, -kSilenceDb / 10.0);
  return keep;
}

double db(double ratio) { return 10.0 * std::log10(ratio); }

}  // namespace

std::vector<double> to_double(const std::vector<int16_t>& x) { return {x.begin(), x.end()}; }

std::vector<double> resample(const std::vector<double>& x, int rate_in, int rate_out) {
  const int g = std::gcd(rate_in, rate_out);
  const long up = rate_out / g, down = rate_in / g;
  const double fc = 0.95 * std::min(1.0, static_cast<double>(up) / static_cast<double>(down));
  const long half = static_cast<long>(std::ceil(16.0 / fc));  // 16 zero crossings each side
  // Phase p of an output sample sits p/up input samples after an input sample.
  std::vector<std::vector<double>> taps(static_cast<size_t>(up));
  for (long p = 0; p < up; ++p) {
    auto& h = taps[static_cast<size_t>(p)];
    double sum = 0.0;
    for (long j = -half; j <= half; ++j) {
      const double t = static_cast<double>(j) - static_cast<double>(p) / static_cast<double>(up);
      const double s = t == 0.0 ? 1.0 : std::sin(kPi * fc * t) / (kPi * fc * t);
      const double u = t / static_cast<double>(half + 1);  // Blackman window over |u| < 1
      const double win = std::fabs(u) < 1.0
                             ? 0.42 + 0.5 * std::cos(kPi * u) + 0.08 * std::cos(2.0 * kPi * u)
                             : 0.0;
      h.push_back(s * win);
      sum += s * win;
    }
    for (double& v : h) v /= sum;  // unit gain at DC in every phase
  }
  const size_t n_out = x.size() * static_cast<size_t>(up) / static_cast<size_t>(down);
  std::vector<double> y(n_out);
  const long n_in = static_cast<long>(x.size());
  for (size_t n = 0; n < n_out; ++n) {
    const long pos = static_cast<long>(n) * down;
    const long k0 = pos / up;
    const auto& h = taps[static_cast<size_t>(pos % up)];
    double acc = 0.0;
    for (long j = -half; j <= half; ++j) {
      const long k = k0 + j;
      if (k >= 0 && k < n_in) acc += x[static_cast<size_t>(k)] * h[static_cast<size_t>(j + half)];
    }
    y[n] = acc;
  }
  return y;
}

double seg_snr_db(const std::vector<double>& clean, const std::vector<double>& x, int rate) {
  const size_t n = std::min(clean.size(), x.size());
  const size_t len = static_cast<size_t>(rate / 50);  // 20 ms
  const std::vector<double> c(clean.begin(), clean.begin() + static_cast<long>(n));
  const std::vector<bool> keep = speech_frames(c, len, len);
  double sum = 0.0;
  int count = 0;
  for (size_t f = 0; f < keep.size(); ++f) {
    if (!keep[f]) continue;
    double s = 0.0, e = 0.0;
    for (size_t i = f * len; i < (f + 1) * len; ++i) {
      s += c[i] * c[i];
      e += (x[i] - c[i]) * (x[i] - c[i]);
    }
    sum += std::clamp(db(s / std::max(e, 1e-20)), -10.0, 35.0);
    ++count;
  }
  return count ? sum / count : 0.0;
}

// RMS over 0..8 kHz of the difference of the two log power spectra, averaged
// over the speech frames, both signals taken to 16 kHz. Powers are floored
// 80 dB below the clean signal's strongest bin, so empty bins do not dominate.
double lsd_db(const std::vector<double>& clean, const std::vector<double>& x, int rate) {
  const size_t n = std::min(clean.size(), x.size());
  const auto c = resample({clean.begin(), clean.begin() + static_cast<long>(n)}, rate, 16000);
  const auto y = resample({x.begin(), x.begin() + static_cast<long>(n)}, rate, 16000);
  const size_t len = 512, hop = 256;
  const std::vector<double> w = hann(len);
  const auto pc = power_frames(c, len, hop, len), py = power_frames(y, len, hop, len);
  const std::vector<bool> keep = speech_frames(c, len, hop, w.data());
  double top = 0.0;
  for (const auto& p : pc) top = std::max(top, *std::max_element(p.begin(), p.end()));
  const double floor = std::max(top * 1e-8, 1e-20);
  double sum = 0.0;
  int count = 0;
  for (size_t f = 0; f < pc.size(); ++f) {
    if (!keep[f]) continue;
    double d2 = 0.0;
    for (size_t k = 0; k < pc[f].size(); ++k) {
      const double d = db(std::max(pc[f][k], floor)) - db(std::max(py[f][k], floor));
      d2 += d * d;
    }
    sum += std::sqrt(d2 / static_cast<double>(pc[f].size()));
    ++count;
  }
  return count ? sum / count : 0.0;
}

// The short-time objective intelligibility measure of C. H. Taal, R. C. Hendriks,
// R. Heusdens and J. Jensen, "An Algorithm for Intelligibility Prediction of
// Time-Frequency Weighted Noisy Speech", IEEE Trans. Audio, Speech, Language
// Process. 19(7), 2011: at 10 kHz, silent frames (40 dB below the loudest clean
// frame) removed from both signals, one-third-octave band envelopes of 384-sample
// Hann frames with 50 % overlap (15 bands, the lowest centred at 150 Hz), then
// over every 30-frame segment of each band the processed envelope is scaled to
// the clean one's energy, clipped at a signal-to-distortion ratio of -15 dB, and
// correlated with the clean envelope. The score is the mean correlation.
double stoi(const std::vector<double>& clean, const std::vector<double>& x, int rate) {
  constexpr int kRate = 10000, kBands = 15, kSegment = 30;
  constexpr size_t kLen = 384, kHop = kLen / 2, kNfft = 512;
  const size_t n = std::min(clean.size(), x.size());
  const auto c = resample({clean.begin(), clean.begin() + static_cast<long>(n)}, rate, kRate);
  const auto y = resample({x.begin(), x.begin() + static_cast<long>(n)}, rate, kRate);

  // Silent frames out: overlap-add the windowed frames that are kept.
  const std::vector<double> w = hann(kLen);
  const std::vector<bool> keep = speech_frames(c, kLen, kHop, w.data());
  std::vector<double> cs, ys;
  size_t at_out = 0;
  for (size_t f = 0; f < keep.size(); ++f) {
    if (!keep[f]) continue;
    cs.resize(at_out + kLen, 0.0);
    ys.resize(at_out + kLen, 0.0);
    for (size_t i = 0; i < kLen; ++i) {
      cs[at_out + i] += c[f * kHop + i] * w[i];
      ys[at_out + i] += y[f * kHop + i] * w[i];
    }
    at_out += kHop;
  }

  // One-third-octave band envelopes.
  const auto pc = power_frames(cs, kLen, kHop, kNfft), py = power_frames(ys, kLen, kHop, kNfft);
  const size_t frames = pc.size();
  if (frames < static_cast<size_t>(kSegment)) return 0.0;  // too short to judge
  std::vector<std::vector<double>> ec(kBands, std::vector<double>(frames)), ey = ec;
  for (int j = 0; j < kBands; ++j) {
    const double centre = 150.0 * std::pow(2.0, j / 3.0);
    const double lo = centre * std::pow(2.0, -1.0 / 6.0), hi = centre * std::pow(2.0, 1.0 / 6.0);
    for (size_t m = 0; m < frames; ++m) {
      double sc = 0.0, sy = 0.0;
      for (size_t k = 0; k <= kNfft / 2; ++k) {
        const double f = static_cast<double>(k) * kRate / static_cast<double>(kNfft);
        if (f >= lo && f < hi) {
          sc += pc[m][k];
          sy += py[m][k];
        }
      }
      ec[j][m] = std::sqrt(sc);
      ey[j][m] = std::sqrt(sy);
    }
  }

  const double clip = 1.0 + std::pow(10.0, 15.0 / 20.0);
  double sum = 0.0;
  long count = 0;
  for (size_t m = kSegment - 1; m < frames; ++m) {
    for (int j = 0; j < kBands; ++j) {
      const double* xs = &ec[j][m + 1 - kSegment];
      const double* ysg = &ey[j][m + 1 - kSegment];
      const double alpha = std::sqrt(energy(xs, kSegment) / std::max(energy(ysg, kSegment), 1e-30));
      double yc[kSegment];
      double mx = 0.0, my = 0.0;
      for (int i = 0; i < kSegment; ++i) {
        yc[i] = std::min(alpha * ysg[i], clip * xs[i]);
        mx += xs[i] / kSegment;
        my += yc[i] / kSegment;
      }
      double num = 0.0, dx = 0.0, dy = 0.0;
      for (int i = 0; i < kSegment; ++i) {
        num += (xs[i] - mx) * (yc[i] - my);
        dx += (xs[i] - mx) * (xs[i] - mx);
        dy += (yc[i] - my) * (yc[i] - my);
      }
      sum += num / std::max(std::sqrt(dx * dy), 1e-30);
      ++count;
    }
  }
  return sum / static_cast<double>(count);
}

Quality measure(const std::vector<double>& clean, const std::vector<double>& x, int rate) {
  const size_t n = std::min(clean.size(), x.size());
  double s = 0.0, e = 0.0;
  for (size_t i = 0; i < n; ++i) {
    s += clean[i] * clean[i];
    e += (x[i] - clean[i]) * (x[i] - clean[i]);
  }
  return Quality{db(s / std::max(e, 1e-300)), seg_snr_db(clean, x, rate), lsd_db(clean, x, rate),
                 stoi(clean, x, rate)};
}

}  // namespace denoise

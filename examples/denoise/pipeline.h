// SPDX-License-Identifier: MIT
// The per-frame noise-reduction pipeline of qel-denoise, built from qel calls.
//
// One frame is one hop of 768 samples at 48 kHz (16 ms):
//   analyze:    16-bit -> float, FIR decimation 48 -> 16 kHz, sqrt-Hann analysis window
//   (forward FFT, outside the library, 512 points -> 257 bins: fft.h)
//   spectral:   per-bin power, speech presence and the noise it lets through
//               (against minimum statistics), decision-directed Wiener gain with
//               onset protection, a floor by speech presence, isolated peaks
//               clipped where speech is absent, gain applied to the spectrum
//   (inverse FFT, outside the library)
//   synthesize: sqrt-Hann synthesis window and overlap-add, FIR interpolation
//               16 -> 48 kHz, float -> 16-bit
// The same code runs in qel-denoise on the host and on the Cortex-M33, and in the
// M33 frame-cost program; every buffer is fixed-size here: a frame neither
// allocates nor calls anything but qel and the FFT callbacks.
#pragma once

#include <array>
#include <cstdint>

#include "vector.h"

namespace denoise {

inline constexpr int kInRate = 48000;
inline constexpr int kFactor = 3;
inline constexpr int kRate = kInRate / kFactor;  // 16 kHz processing rate
inline constexpr int kFft = 512;
inline constexpr int kBins = kFft / 2 + 1;
inline constexpr int kHop = kFft / 2;          // 50% overlap, at 16 kHz
inline constexpr int kHopIn = kHop * kFactor;  // one frame at 48 kHz
inline constexpr int kTaps = 65;               // both rate-change filters, odd: integer delay

// Samples of delay from input to output at 48 kHz: the overlap-add emits a hop
// one hop late, and each linear-phase filter delays by (kTaps - 1) / 2.
inline constexpr int kDelay = kHopIn + (kTaps - 1);

// The transform lies outside the library. forward: kFft real samples -> kBins
// bins in split storage. inverse: kBins bins -> kFft real samples, UNSCALED
// (the pipeline folds the 1/kFft into its synthesis window).
struct Fft {
  void (*forward)(void* ctx, const float* time, float* re, float* im);
  void (*inverse)(void* ctx, const float* re, const float* im, float* time);
  void* ctx;
};

// The rate-change low-pass (kTaps at 48 kHz, Kaiser-windowed sinc) scaled to a
// DC gain of `gain`. Symmetric, so the time-reversed order the FIR calls want is the same.
void design_lowpass(float* h, float gain);

struct Params {
  // Noise tracker: the noise power follows the power wherever speech is unlikely.
  float smoothing = 0.7f;           // time smoothing of the power before the minimum search
  int window_frames = 40;           // minimum-search sub-window (0.64 s); two are searched
  float presence_low = 1.5f;        // smoothed power over its minimum: below, no speech;
  float presence_high = 4.0f;       // above, speech; in between, the presence rises linearly
  float presence_smoothing = 0.2f;  // weight of the previous frame's speech presence
  float noise_smoothing = 0.97f;    // noise update weight of the old estimate, speech absent
  float noise_ceiling = 2.0f;       // noise at most this times the smoothed power
  float noise_overestimate = 1.2f;  // noise power taken times this in the gain
  // Gain: decision-directed a priori SNR, Wiener gain, lower bound by speech presence.
  float dd_alpha = 0.98f;          // decision-directed weight of the previous frame's estimate
  float onset_weight = 0.4f;       // a priori SNR at least this times (gamma - 1): onsets
  float xi_floor = 0.0025f;        // a priori SNR floor (-26 dB)
  float gain_floor = 0.05f;        // -26 dB where speech is absent
  float gain_floor_speech = 0.2f;  // -14 dB where it is present: keeps weak speech whole
  int low_cut_bins = 3;            // bins from DC held at the floor (below 94 Hz), 1 or more
  bool bypass = false;             // gain held at 1: only the resampling and the STFT act
};

class Pipeline {
 public:
  explicit Pipeline(const Params& p = Params{});
  Pipeline(const Pipeline&) = delete;  // the spectrum records point into the object
  Pipeline& operator=(const Pipeline&) = delete;

  // One whole frame: kHopIn samples in, kHopIn samples out (kDelay samples late).
  void process(const int16_t* in, int16_t* out, const Fft& fft);

  // The stages of process(), for callers that convert PCM themselves (24-bit)
  // and for the M33 cost program, which counts them apart from the FFT.
  void analyze(const float* in);  // kHopIn floats at 48 kHz -> time_frame()
  void analyze_pcm16(const int16_t* in);
  void spectral();              // spectrum() -> gain -> out_spectrum()
  void synthesize(float* out);  // out_time() -> kHopIn floats at 48 kHz
  void synthesize_pcm16(int16_t* out);

  float* time_frame() { return frame_.data(); }      // FFT input
  qel_cpx_vec& spectrum() { return spec_; }          // FFT output
  qel_cpx_vec& out_spectrum() { return out_spec_; }  // IFFT input
  float* out_time() { return out_frame_.data(); }    // IFFT output

  // Per-bin powers of the last frame, before and after the gain (the spectrogram).
  const float* input_power() const { return pow_.data(); }
  const float* output_power() const { return clean_.data(); }

 private:
  using Bins = std::array<float, kBins>;
  static qel_flt_vec view(Bins& b) { return qel_flt_vec{kBins, b.data()}; }
  void track_noise();
  void compute_gain();

  Params p_;
  std::array<float, kTaps> dec_coeffs_{};
  std::array<float, kTaps> int_coeffs_{};
  std::array<float, kTaps - 1 + kHopIn> dec_state_{};
  std::array<float, kTaps - 1 + kHopIn> int_state_{};
  std::array<float, kHopIn> in_{};  // one frame at 48 kHz, floats
  std::array<float, kHopIn> out_{};
  std::array<float, kFft> analysis_{};   // last kFft samples at 16 kHz
  std::array<float, kFft> window_{};     // sqrt-Hann
  std::array<float, kFft> synthesis_{};  // sqrt-Hann / kFft, stored reversed (see .cpp)
  std::array<float, kFft> frame_{};
  std::array<float, kFft> out_frame_{};
  std::array<float, kFft> ola_{};
  std::array<float, kBins> re_{}, im_{}, out_re_{}, out_im_{};
  qel_cpx_vec spec_{kBins, re_.data(), im_.data()};
  qel_cpx_vec out_spec_{kBins, out_re_.data(), out_im_.data()};
  Bins pow_{}, pow3_{}, smooth_{}, min_now_{}, min_prev_{}, noise_{}, presence_{};
  Bins gamma_{}, xi_{}, gain_{}, peaks_{}, clean_{}, tmp_{}, tmp2_{}, zeros_{};
  Bins inv_over_{};  // 1 / noise_overestimate in every bin
  int frames_ = 0;
};

}  // namespace denoise

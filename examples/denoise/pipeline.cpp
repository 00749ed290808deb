// SPDX-License-Identifier: MIT
// The per-frame noise-reduction pipeline: every vector operation is a qel call.
#include "pipeline.h"

#include <cmath>

namespace denoise {
namespace {

constexpr float kPi = 3.14159265358979f;
constexpr float kTiny = 1e-12f;  // keeps ratios finite in digital silence
constexpr int kSettleFrames = 8;
constexpr float kCutoff = 6600.0f;  // rate-change low-pass: flat to ~5 kHz, -74 dB at 8 kHz

qel_flt_vec half(std::array<float, kFft>& a, int which) {
  qel_flt_vec whole{kFft, a.data()};
  qel_flt_vec v;
  qel_flt_vec_get_subvec(&whole, which * kHop, which * kHop + kHop - 1, &v);
  return v;
}

// a[0..kHop) = a[kHop..kFft): the buffer slides by one hop.
void slide(std::array<float, kFft>& a) {
  const qel_flt_vec upper = half(a, 1);
  qel_flt_vec lower = half(a, 0);
  qel_flt_vec_copy(&upper, &lower);
}

}  // namespace

void design_lowpass(float* h, float gain) {
  const float fc = 2.0f * kCutoff / static_cast<float>(kInRate);  // of the Nyquist rate
  const int mid = (kTaps - 1) / 2;
  float sum = 0.0f;
  for (int n = 0; n < kTaps; ++n) {
    const float t = static_cast<float>(n - mid);
    const float sinc = (n == mid) ? fc : std::sin(kPi * fc * t) / (kPi * t);
    const float phase = 2.0f * kPi * static_cast<float>(n) / static_cast<float>(kTaps - 1);
    const float blackman = 0.42f - 0.5f * std::cos(phase) + 0.08f * std::cos(2.0f * phase);
    h[n] = sinc * blackman;
    sum += h[n];
  }
  for (int n = 0; n < kTaps; ++n) h[n] *= gain / sum;
}

Pipeline::Pipeline(const Params& p) : p_(p) {
  design_lowpass(dec_coeffs_.data(), 1.0f);
  // Zero stuffing leaves 1/kFactor of the signal's level: the interpolator
  // applies no gain itself, so its coefficients carry it.
  design_lowpass(int_coeffs_.data(), static_cast<float>(kFactor));
  for (int n = 0; n < kFft; ++n) {
    // Periodic sqrt-Hann: w[n]^2 + w[n + kHop]^2 = 1, so analysis and synthesis
    // with the same window reconstruct the signal exactly at 50% overlap.
    window_[n] = std::sin(kPi * static_cast<float>(n) / static_cast<float>(kFft));
  }
  // qel_fl_maa reads its window backwards from the pointer it is given, and the
  // periodic window is not symmetric: store it reversed so that, read back from
  // its last element, element k meets w[k]. The 1/kFft of the inverse FFT rides along.
  for (int n = 0; n < kFft; ++n) synthesis_[kFft - 1 - n] = window_[n] / static_cast<float>(kFft);
}

void Pipeline::analyze(const float* in) {
  slide(analysis_);
  qel_flt_fir_decimate(in, analysis_.data() + kHop, dec_state_.data(), dec_coeffs_.data(), kTaps,
                       kFactor, kHopIn);
  const qel_flt_vec a{kFft, analysis_.data()};
  const qel_flt_vec w{kFft, window_.data()};
  qel_flt_vec f{kFft, frame_.data()};
  qel_flt_vec_dot_product(&a, &w, &f);
}

void Pipeline::analyze_pcm16(const int16_t* in) {
  qel_vec_normalize(in, in_.data(), kHopIn);
  analyze(in_.data());
}

// Minimum statistics: the noise power in a bin is the minimum of its smoothed
// power over the last one to two sub-windows, times a bias correction. Speech
// pauses and the gaps between harmonics let the minimum reach the noise floor.
void Pipeline::track_noise() {
  qel_flt_vec pw = view(pow_), sm = view(smooth_), now = view(min_now_), prev = view(min_prev_),
              noise = view(noise_);
  if (frames_ == 0) {
    qel_flt_vec_copy(&pw, &sm);
  } else {
    qel_flt_vec_scale(&sm, p_.smoothing);
    qel_flt_vec_pairwise_bias(&sm, &pw, 1.0f - p_.smoothing);
  }
  if (frames_ < kSettleFrames) {
    // Until the smoothing has settled (and the analysis buffer has filled), a
    // minimum would catch the start-up transient: take the smoothed power as it is.
    qel_flt_vec_copy(&sm, &now);
    qel_flt_vec_copy(&sm, &prev);
  }
  qel_flt_vec_min(&now, &sm, &now);
  qel_flt_vec_min(&now, &prev, &noise);
  qel_flt_vec_scale(&noise, p_.noise_bias);
  ++frames_;
  if (frames_ % p_.window_frames == 0) {
    qel_flt_vec_copy(&now, &prev);
    qel_flt_vec_copy(&sm, &now);
  }
}

// Decision-directed Wiener gain: the a priori SNR xi blends last frame's clean
// power estimate with this frame's excess of power over the noise; G = xi / (1 + xi).
void Pipeline::compute_gain() {
  qel_flt_vec pw = view(pow_), noise = view(noise_), gamma = view(gamma_), xi = view(xi_),
              gain = view(gain_), clean = view(clean_), tmp = view(tmp_), zeros = view(zeros_);
  qel_flt_vec_ratio_flt(&pw, &noise, kTiny, &gamma);     // posterior SNR
  qel_flt_vec_smooth(&gamma, &zeros, p_.gamma_ceiling);  // slope 0: a clamp
  qel_flt_vec_subtract_max(&gamma, 1.0f, &tmp, 0.0f);    // max(gamma - 1, 0)
  qel_flt_vec_scale(&tmp, 1.0f - p_.dd_alpha);
  qel_flt_vec_ratio_flt(&clean, &noise, kTiny, &xi);  // last frame's clean SNR
  qel_flt_vec_scale_add(&xi, p_.dd_alpha, &tmp);
  qel_fl_max(xi.data, xi.data, p_.xi_floor, kBins);
  qel_flt_vec_ratio_flt(&xi, &xi, 1.0f, &gain);  // xi / (1 + xi)
  qel_flt_vec_max_value(&gain, p_.gain_floor, &gain);
  if (p_.bypass) qel_flt_vec_set(&gain, 1.0f);
  qel_flt_vec_dot_product(&gain, &gain, &clean);  // clean power: G^2 |X|^2
  qel_flt_vec_dot_product(&clean, &pw, &clean);
}

void Pipeline::spectral() {
  qel_flt_vec pw = view(pow_), gain = view(gain_);
  qel_cpx_vec_power(&spec_, &pw);
  track_noise();
  compute_gain();
  qel_cpx_vec_dot_product_flt(&spec_, &gain, &out_spec_);
}

void Pipeline::synthesize(float* out) {
  qel_fl_maa(ola_.data(), out_frame_.data(), &synthesis_[kFft - 1], kFft);
  // The first hop of the overlap-add buffer now has both of its frames.
  qel_flt_fir_interpolate(ola_.data(), out, int_state_.data(), int_coeffs_.data(), kTaps, kFactor,
                          kHop);
  slide(ola_);
  qel_flt_vec upper = half(ola_, 1);
  qel_flt_vec_set(&upper, 0.0f);
}

void Pipeline::synthesize_pcm16(int16_t* out) {
  synthesize(out_.data());
  qel_vec_denormalize(out_.data(), out, kHopIn);
}

void Pipeline::process(const int16_t* in, int16_t* out, const Fft& fft) {
  analyze_pcm16(in);
  fft.forward(fft.ctx, frame_.data(), re_.data(), im_.data());
  spectral();
  fft.inverse(fft.ctx, out_re_.data(), out_im_.data(), out_frame_.data());
  synthesize_pcm16(out);
}

}  // namespace denoise

// SPDX-License-Identifier: MIT
// The per-frame noise-reduction pipeline: every vector operation is a qel call.
#include "pipeline.h"

#include <cmath>

#include "trig.h"

namespace denoise {
namespace {

constexpr float kPi = 3.14159265358979f;
constexpr float kTiny = 1e-12f;  // keeps ratios finite in digital silence
constexpr int kSettleFrames = 8;
// Rate-change low-pass: flat to 5 kHz, -1.4 dB at 6 kHz, -59 dB from 8 kHz and
// -67 dB from 9 kHz, the band that folds back onto speech at 16 kHz. A Kaiser
// window gets there with a third fewer taps than a Blackman one: the taps are
// most of the frame's cycles on the device.
constexpr float kCutoff = 6600.0f;
constexpr float kKaiserBeta = 5.65f;  // 0.1102 (A - 8.7) for A = 60 dB

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

qel_flt_vec bins(std::array<float, kBins>& a, int first, int last) {
  qel_flt_vec whole{kBins, a.data()};
  qel_flt_vec v;
  qel_flt_vec_get_subvec(&whole, first, last, &v);
  return v;
}

// out[k] = w (x[k-1]/4 + x[k]/2 + x[k+1]/4), the missing neighbour at either
// end replaced by the bin itself. out must not be x.
void smooth3(std::array<float, kBins>& x, float w, std::array<float, kBins>& out) {
  qel_flt_vec all = bins(x, 0, kBins - 1), o = bins(out, 0, kBins - 1);
  qel_flt_vec_scale2(&all, 0.5f * w, &o);
  qel_flt_vec o_hi = bins(out, 1, kBins - 1), o_lo = bins(out, 0, kBins - 2);
  const qel_flt_vec x_lo = bins(x, 0, kBins - 2), x_hi = bins(x, 1, kBins - 1);
  qel_flt_vec_pairwise_bias(&o_hi, &x_lo, 0.25f * w);
  qel_flt_vec_pairwise_bias(&o_lo, &x_hi, 0.25f * w);
  out[0] += 0.25f * w * x[0];
  out[kBins - 1] += 0.25f * w * x[kBins - 1];
}

// out[k] = min(x[k], max(x[k-1], x[k+1])): a bin above both neighbours comes
// down to the larger of them, every other bin stays, the end bins too. hi is
// scratch. Two passes where a median of three takes four.
void clip_peaks(std::array<float, kBins>& x, std::array<float, kBins>& hi,
                std::array<float, kBins>& out) {
  const qel_flt_vec a = bins(x, 0, kBins - 3), b = bins(x, 1, kBins - 2), c = bins(x, 2, kBins - 1);
  qel_flt_vec h = bins(hi, 0, kBins - 3), o = bins(out, 1, kBins - 2);
  qel_flt_vec_max(&a, &c, &h);
  qel_flt_vec_min(&b, &h, &o);
  out[0] = x[0];
  out[kBins - 1] = x[kBins - 1];
}

// I0(x), the zeroth-order modified Bessel function of the first kind, by its
// power series: sum of ((x/2)^k / k!)^2, whose terms fall below float's
// resolution well before the 30th for the x of the window (x <= 6).
float bessel_i0(float x) {
  const float q = 0.25f * x * x;
  float term = 1.0f, sum = 1.0f;
  for (int k = 1; k < 30; ++k) {
    term *= q / static_cast<float>(k * k);
    sum += term;
  }
  return sum;
}

}  // namespace

// Windowed-sinc low-pass at 48 kHz with a Kaiser window, scaled to a DC gain of
// `gain`. Symmetric, so the time-reversed order the FIR calls want is the same.
// Sines come from trig.h, not the C library: the host's and the device's
// libraries round them differently (sqrt is exactly rounded on both).
void design_lowpass(float* h, float gain) {
  const float fc = 2.0f * kCutoff / static_cast<float>(kInRate);  // of the Nyquist rate
  const int mid = (kTaps - 1) / 2;
  const float i0_beta = bessel_i0(kKaiserBeta);
  float sum = 0.0f;
  for (int n = 0; n < kTaps; ++n) {
    const float t = static_cast<float>(n - mid);
    const float sinc = (n == mid) ? fc : sin_turns(0.5f * fc * t) / (kPi * t);
    const float u = t / static_cast<float>(mid);  // -1 .. 1 across the filter
    const float kaiser = bessel_i0(kKaiserBeta * std::sqrt(1.0f - u * u)) / i0_beta;
    h[n] = sinc * kaiser;
    sum += h[n];
  }
  for (int n = 0; n < kTaps; ++n) h[n] *= gain / sum;
}

Pipeline::Pipeline(const Params& p) : p_(p) {
  inv_over_.fill(1.0f / p_.noise_overestimate);
  design_lowpass(dec_coeffs_.data(), 1.0f);
  // Zero stuffing leaves 1/kFactor of the signal's level: the interpolator
  // applies no gain itself, so its coefficients carry it.
  design_lowpass(int_coeffs_.data(), static_cast<float>(kFactor));
  for (int n = 0; n < kFft; ++n) {
    // Periodic sqrt-Hann: w[n]^2 + w[n + kHop]^2 = 1, so analysis and synthesis
    // with the same window reconstruct the signal exactly at 50% overlap.
    window_[n] = sin_turns(static_cast<float>(n) / static_cast<float>(2 * kFft));
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

// Speech-presence-weighted noise tracking. The power, smoothed over three bins
// and in time, is compared with its minimum over the last one to two
// sub-windows: well above it, speech is likely. The speech presence p (smoothed
// in time) slows the noise update, N += (1 - a)(1 - p)(|X|^2 - N), so the noise
// follows the power in pauses and between harmonics and holds during speech.
void Pipeline::track_noise() {
  qel_flt_vec pw = view(pow_), sm = view(smooth_), now = view(min_now_), prev = view(min_prev_),
              noise = view(noise_), p = view(presence_), tmp = view(tmp_), tmp2 = view(tmp2_),
              zeros = view(zeros_), pw3 = view(pow3_);
  // The smoothing's new-power weight rides in the spatial smoothing's: one pass less.
  smooth3(pow_, 1.0f - p_.smoothing, pow3_);
  if (frames_ == 0) {
    qel_flt_vec_scale2(&pw3, 1.0f / (1.0f - p_.smoothing), &sm);
  } else {
    qel_flt_vec_scale_add(&sm, p_.smoothing, &pw3);
  }
  if (frames_ < kSettleFrames) {
    // Until the smoothing has settled (and the analysis buffer has filled), a
    // minimum would catch the start-up transient: take the smoothed power as it is.
    qel_flt_vec_copy(&sm, &now);
    qel_flt_vec_copy(&sm, &prev);
    qel_flt_vec_copy(&sm, &noise);
  }
  qel_flt_vec_min(&now, &sm, &now);
  qel_flt_vec_min(&now, &prev, &tmp);

  // Presence indicator: the ratio to the minimum mapped linearly from 0 at
  // presence_low to 1 at presence_high, then smoothed in time (the new
  // frame's weight w taken into the mapping and its clamp).
  const float w = 1.0f - p_.presence_smoothing;
  qel_flt_vec_ratio_flt(&sm, &tmp, kTiny, &tmp2);
  qel_flt_vec_subtract_max(&tmp2, p_.presence_low, &tmp2, 0.0f);
  qel_flt_vec_scale(&tmp2, w / (p_.presence_high - p_.presence_low));
  qel_flt_vec_smooth(&tmp2, &zeros, w);  // slope 0: a clamp at w
  qel_flt_vec_scale_add(&p, p_.presence_smoothing, &tmp2);

  if (frames_ >= kSettleFrames) {
    const float step = 1.0f - p_.noise_smoothing;
    qel_flt_vec_scale2(&p, -step, &tmp);  // (1 - a)(1 - p)
    qel_flt_vec_add_flt(&tmp, step);
    qel_flt_vec_subtract(&pw, &noise, &tmp2);
    qel_flt_vec_pairwise_scale(&tmp2, &tmp);
    qel_flt_vec_add(&noise, &tmp2, &noise);
    // Never above noise_ceiling times the smoothed power: a signal that
    // starts in speech set the first estimate too high, and the presence-
    // gated update alone would take seconds to forget it.
    qel_flt_vec_scale2(&sm, p_.noise_ceiling, &tmp2);
    qel_flt_vec_min(&tmp2, &noise, &noise);
  }
  ++frames_;
  if (frames_ % p_.window_frames == 0) {
    qel_flt_vec_copy(&now, &prev);
    qel_flt_vec_copy(&sm, &now);
  }
}

// Decision-directed a priori SNR xi: last frame's clean power estimate blended
// with this frame's excess of power over the noise, and raised to part of that
// excess where it jumps: the blend alone lags a frame or two behind an onset
// and clips the start of every syllable. Wiener gain G = xi / (1 + xi), bounded
// below by a floor that rises with speech presence. Where speech is absent the
// gain of a bin above both its neighbours comes down to the larger of them, so
// an isolated bin of noise that crossed the threshold does not ring on its own
// (musical noise); where speech is present the gain is kept, harmonics included.
void Pipeline::compute_gain() {
  qel_flt_vec pw = view(pow_), noise = view(noise_), gamma = view(gamma_), xi = view(xi_),
              gain = view(gain_), clipped = view(peaks_), clean = view(clean_), tmp = view(tmp_),
              tmp2 = view(tmp2_), inv_over = view(inv_over_), p = view(presence_);
  // One division for both SNRs: 1 / (overestimate * noise).
  qel_flt_vec_ratio_flt(&inv_over, &noise, kTiny, &tmp2);
  qel_flt_vec_dot_product(&pw, &tmp2, &gamma);           // posterior SNR
  qel_flt_vec_subtract_max(&gamma, 1.0f, &gamma, 0.0f);  // max(gamma - 1, 0)
  qel_flt_vec_dot_product(&clean, &tmp2, &xi);           // last frame's clean SNR
  qel_flt_vec_scale2(&gamma, 1.0f - p_.dd_alpha, &tmp);
  qel_flt_vec_scale_add(&xi, p_.dd_alpha, &tmp);
  qel_flt_vec_scale(&gamma, p_.onset_weight);
  qel_flt_vec_max(&xi, &gamma, &xi);
  qel_fl_max(xi.data, xi.data, p_.xi_floor, kBins);
  qel_flt_vec_ratio_flt(&xi, &xi, 1.0f, &gain);  // xi / (1 + xi)
  qel_flt_vec_scale2(&p, p_.gain_floor_speech - p_.gain_floor, &tmp);
  qel_flt_vec_add_flt(&tmp, p_.gain_floor);
  qel_flt_vec_max(&gain, &tmp, &gain);
  clip_peaks(gain_, tmp_, peaks_);  // G = clipped + p (G - clipped)
  qel_flt_vec_subtract(&gain, &clipped, &tmp);
  qel_flt_vec_pairwise_scale(&tmp, &p);
  qel_flt_vec_add(&clipped, &tmp, &gain);
  // Nothing of speech lies below ~90 Hz, and rumble there would leak into the
  // lowest harmonics' bins through the window: those bins stay at the floor.
  qel_flt_vec low = bins(gain_, 0, p_.low_cut_bins - 1);
  qel_flt_vec_set(&low, p_.gain_floor);
  if (p_.bypass) qel_flt_vec_set(&gain, 1.0f);
}

void Pipeline::spectral() {
  qel_flt_vec pw = view(pow_), gain = view(gain_), clean = view(clean_);
  qel_cpx_vec_power(&spec_, &pw);
  track_noise();
  compute_gain();
  qel_cpx_vec_dot_product_flt(&spec_, &gain, &out_spec_);
  qel_cpx_vec_power(&out_spec_, &clean);  // the clean power estimate |G X|^2
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

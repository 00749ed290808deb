// SPDX-License-Identifier: MIT
// FIR filters on the M33: instructions per multiply-accumulate. The decimator
// counts the MACs it computes (outputs x taps); the interpolator is given per
// non-zero MAC (taps x inputs) and per full-formula MAC (taps x L x inputs).
#include <initializer_list>

#include "counter.h"
#include "vector.h"

namespace {

constexpr int kMaxTaps = 128;
constexpr int kMaxIn = 480;

struct Buffers {
  float coeffs[kMaxTaps];
  float src[kMaxIn];
  float dst[kMaxIn];
  int16 src16[kMaxIn];
  int16 dst16[kMaxIn];
  float state[kMaxTaps - 1 + kMaxIn];
};

}  // namespace

QEL_M33_BENCH(fir) {
  using qel::bench::count;
  using qel::bench::report;
  static Buffers b;
  for (int k = 0; k < kMaxTaps; ++k) b.coeffs[k] = static_cast<float>((k * 37) % 23 - 11) * 0.01f;
  for (int k = 0; k < kMaxIn; ++k) {
    b.src[k] = static_cast<float>((k * 53) % 41 - 20) * 0.05f;
    b.src16[k] = static_cast<int16>((k * 977) % 20001 - 10000);
  }

  for (int taps : {32, 128}) {
    const int n = 160;
    report("qel_flt_fir", taps == 32 ? "32 taps x 160" : "128 taps x 160",
           count([&] { qel_flt_fir(b.src, b.dst, b.state, b.coeffs, taps, n); }),
           static_cast<double>(taps) * n, "MAC", taps == 32 ? 2.75 : 2.50);
  }

  {
    const int taps = 48, m = 3, n = 480;
    const double macs = static_cast<double>(taps) * (n / m);
    report("qel_flt_fir_decimate", "M3 48 taps x 480",
           count([&] { qel_flt_fir_decimate(b.src, b.dst, b.state, b.coeffs, taps, m, n); }), macs,
           "MAC", 3.00);
    report("qel_flt_fir_decimate_int16", "M3 48 taps x 480", count([&] {
             qel_flt_fir_decimate_int16(b.src16, b.dst16, b.state, b.coeffs, taps, m, n);
           }),
           macs, "MAC");
  }

  {
    const int taps = 48, l = 3, n = 160;
    const double nonzero = static_cast<double>(taps) * n;
    for (float* s = b.state; s != b.state + taps - 1; ++s) *s = 0.0f;  // a filter at rest
    const auto f =
        count([&] { qel_flt_fir_interpolate(b.src, b.dst, b.state, b.coeffs, taps, l, n); });
    report("qel_flt_fir_interpolate", "L3 48 taps x 160", f, nonzero, "nonzero MAC", 3.00);
    report("qel_flt_fir_interpolate", "L3 48 taps x 160", f, nonzero * l, "full MAC");
    const auto s = count(
        [&] { qel_flt_fir_interpolate_int16(b.src16, b.dst16, b.state, b.coeffs, taps, l, n); });
    report("qel_flt_fir_interpolate_int16", "L3 48 taps x 160", s, nonzero, "nonzero MAC");
    report("qel_flt_fir_interpolate_int16", "L3 48 taps x 160", s, nonzero * l, "full MAC");
    // A non-finite coefficient forces the full formula.
    const float keep = b.coeffs[0];
    b.coeffs[0] = __builtin_inff();
    report("qel_flt_fir_interpolate", "L3 48 taps x 160, full",
           count([&] { qel_flt_fir_interpolate(b.src, b.dst, b.state, b.coeffs, taps, l, n); }),
           nonzero * l, "full MAC");
    b.coeffs[0] = keep;
  }
}

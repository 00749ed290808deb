// SPDX-License-Identifier: MIT
// FIR filters: the worked cases of the state convention, the rate changes and
// the 16-bit forms, one row each.
#include <gtest/gtest.h>

#include <vector>

#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

enum Kind { kFir, kDecimate, kInterpolate, kDecimate16, kInterpolate16 };
using Floats = std::vector<float>;

struct Case {
  const char* why;
  Kind kind;
  int factor;  // M or L
  Floats coeffs, history, in, want, want_history;
};

// One row per line reads as a table. Coefficients 1, 10, 100, ... make each
// output's digits show which sample met which coefficient, exactly.
// clang-format off
const Case kCases[] = {
    {"impulse: the coefficients reversed", kFir, 1, {1, 2, 3, 4, 5}, {0, 0, 0, 0},
     {1, 0, 0, 0, 0, 0, 0}, {5, 4, 3, 2, 1, 0, 0}, {0, 0, 0, 0}},
    {"impulse, M 2: pCoeffs[4 - 2n]", kDecimate, 2, {1, 2, 3, 4, 5}, {0, 0, 0, 0},
     {1, 0, 0, 0, 0, 0, 0, 0}, {5, 3, 1, 0}, {0, 0, 0, 0}},
    {"impulse, L 3: the whole set reversed at the output rate", kInterpolate, 3, {1, 2, 3, 4, 5},
     {0, 0, 0, 0}, {1, 0, 0}, {5, 4, 3, 2, 1, 0, 0, 0, 0}, {0, 0, 0, 0}},
    {"a block shorter than the history shifts it", kFir, 1, {1, 10, 100, 1000, 10000},
     {1, 2, 3, 4}, {5, 6}, {54321, 65432}, {3, 4, 5, 6}},
    {"one tap scales; 0 + 0.5 * -0 is +0", kFir, 1, {0.5f}, {}, {2, -4, kInf, -0.0f, 6},
     {1, -2, kInf, 0, 3}, {}},
    {"an empty block writes nothing", kFir, 1, {1, 2, 3}, {7, 8}, {}, {}, {7, 8}},
    {"blockSize < M: nothing written, nothing enters", kDecimate, 2, {1, 2, 3}, {7, 8}, {9}, {},
     {7, 8}},
    {"an empty block, L 4", kInterpolate, 4, {1, 2, 3}, {7, 8}, {}, {}, {7, 8}},
    {"blockSize 10, M 3: windows end at 0, 3, 6; input 9 is ignored", kDecimate, 3, {1, 10, 100},
     {0, 0}, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, {100, 432, 765}, {8, 9}},
    {"L 2 weighs h0 h1 h2 a 0 b 0, history 0 b 0", kInterpolate, 2, {1, 10, 100, 1000}, {7, 2, 3},
     {4, 5}, {4327, 432, 5043, 504}, {0, 5, 0}},
    {"one tap, L 3: each input and two zeros", kInterpolate, 3, {2}, {}, {1, -3},
     {2, 0, 0, -6, 0, 0}, {}},
    {"16-bit: averaging at PCM scale", kDecimate16, 1, {0.25f, 0.25f, 0.25f, 0.25f},
     {1000, 1000, 1000}, {1000, 1000, 1000}, {1000, 1000, 1000}, {1000, 1000, 1000}},
    {"16-bit: 2.5 truncates to 2", kDecimate16, 1, {0.5f}, {}, {5, 5}, {2, 2}, {}},
    {"16-bit: -2.5 truncates to -2", kDecimate16, 1, {0.5f}, {}, {-5, -5}, {-2, -2}, {}},
    {"16-bit: 65534 saturates", kDecimate16, 1, {1, 1}, {32767}, {32767, 32767},
     {32767, 32767}, {32767}},
    {"16-bit: -65536 saturates", kDecimate16, 1, {1, 1}, {-32768}, {-32768}, {-32768}, {-32768}},
    {"16-bit, L 2: 2.5 truncates, zeros between", kInterpolate16, 2, {0.5f}, {}, {5, -5},
     {2, 0, -2, 0}, {}},
    {"16-bit, L 1: 65534 saturates", kInterpolate16, 1, {1, 1}, {32767}, {32767, 32767},
     {32767, 32767}, {32767}},
    // Each accumulator starts at +0: products that are all -0 sum to +0.
    {"-0 products, block filter", kFir, 1, {-1, -2, -3}, {0, 0}, Floats(9, 0.0f),
     Floats(9, 0.0f), {0, 0}},
    {"-0 products, M 2", kDecimate, 2, {-1, -2, -3}, {0, 0}, Floats(18, 0.0f), Floats(9, 0.0f),
     {0, 0}},
    {"-0 products, M 5 (any factor)", kDecimate, 5, {-1, -2, -3}, {0, 0}, Floats(25, 0.0f),
     Floats(5, 0.0f), {0, 0}},
    {"-0 products, L 2", kInterpolate, 2, {-1, -2, -3}, {0, 0}, Floats(5, 0.0f),
     Floats(10, 0.0f), {0, 0}},
};
// clang-format on

TEST(Fir, WorkedCases) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.why);
    const int taps = static_cast<int>(c.coeffs.size()), n = static_cast<int>(c.in.size());
    Floats state = c.history, out(c.want.size());
    state.resize(static_cast<size_t>(taps - 1 + c.factor * n), kNaN);  // the working area
    std::vector<int16_t> in16, out16(out.size());
    if (c.kind >= kDecimate16) in16.assign(c.in.begin(), c.in.end());  // PCM rows hold samples
    const float* k = c.coeffs.data();
    switch (c.kind) {
      case kFir:
        qel_flt_fir(c.in.data(), out.data(), state.data(), k, taps, n);
        break;
      case kDecimate:
        qel_flt_fir_decimate(c.in.data(), out.data(), state.data(), k, taps, c.factor, n);
        break;
      case kInterpolate:
        qel_flt_fir_interpolate(c.in.data(), out.data(), state.data(), k, taps, c.factor, n);
        break;
      case kDecimate16:
        qel_flt_fir_decimate_int16(in16.data(), out16.data(), state.data(), k, taps, c.factor, n);
        break;
      case kInterpolate16:
        qel_flt_fir_interpolate_int16(in16.data(), out16.data(), state.data(), k, taps, c.factor,
                                      n);
        break;
    }
    if (c.kind == kDecimate16 || c.kind == kInterpolate16) out.assign(out16.begin(), out16.end());
    expect_same_values(c.want.data(), out.data(), static_cast<int>(out.size()), "output", true);
    expect_same_values(c.want_history.data(), state.data(), static_cast<int>(c.want_history.size()),
                       "history", true);
  }
}

}  // namespace
}  // namespace qel::test

// SPDX-License-Identifier: MIT
// The filters against their plain references: tap counts 1..70, factors 1..8,
// several calls of uneven blocks on one state, specials in inputs,
// coefficients and history, junk in the working area, in place and not, and
// canaries past every output and past the state.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "ref/fir_ref.h"
#include "support/soak.h"
#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

enum class Kind { kFir, kDecimate, kDecimate16, kInterpolate, kInterpolate16 };
// stuffed: an interpolator's zeros, signed; twos: silence (history and first
// block) but ±2.0 in one slot where those zeros go, whose bits a zero test
// that drops one bit too many, or skips that slot, would take for zeros.
enum class History { kZero, kJunk, kStuffed, kTwos };

struct Config {
  Kind kind;
  int taps;
  int factor;  // M or L; 1 for the block filter
  std::vector<int> blocks;
  bool special_coeffs;
  History history;
  bool in_place;
};

bool sixteen(Kind k) { return k == Kind::kDecimate16 || k == Kind::kInterpolate16; }
bool interpolating(Kind k) { return k == Kind::kInterpolate || k == Kind::kInterpolate16; }
bool decimating(Kind k) { return k == Kind::kDecimate || k == Kind::kDecimate16; }
int outputs(const Config& c, int n) {
  return interpolating(c.kind) ? c.factor * n : decimating(c.kind) ? n / c.factor : n;
}
int appended(const Config& c, int n) {
  return decimating(c.kind) ? c.factor * (n / c.factor) : outputs(c, n);
}

// The kernel or the reference of one kind, on float or 16-bit blocks.
template <typename T>
void call(const Config& c, bool ref, const T* src, T* dst, float* state, const float* coeffs,
          int n) {
  if constexpr (std::is_same_v<T, float>) {
    if (c.kind == Kind::kFir) {
      (ref ? ref::fir : qel_flt_fir)(src, dst, state, coeffs, c.taps, n);
    } else {
      (decimating(c.kind) ? (ref ? ref::fir_decimate : qel_flt_fir_decimate)
                          : (ref ? ref::fir_interpolate : qel_flt_fir_interpolate))(
          src, dst, state, coeffs, c.taps, c.factor, n);
    }
  } else {
    (decimating(c.kind) ? (ref ? ref::fir_decimate_int16 : qel_flt_fir_decimate_int16)
                        : (ref ? ref::fir_interpolate_int16 : qel_flt_fir_interpolate_int16))(
        src, dst, state, coeffs, c.taps, c.factor, n);
  }
}

// Runs the calls of one configuration on the kernel and on the reference, from
// the same state, comparing the outputs and the whole state after every call.
template <typename T>
void run(Rng& rng, const Config& c) {
  SCOPED_TRACE(testing::Message() << "kind " << static_cast<int>(c.kind) << ", taps " << c.taps
                                  << ", factor " << c.factor << (c.in_place ? ", in place" : ""));
  const float range = sixteen(c.kind) ? 0.3f : 1.0f;
  std::vector<float> coeffs;
  for (int k = 0; k < c.taps; ++k) {
    const bool special = c.special_coeffs && rng.below(6) == 0;
    coeffs.push_back(special ? rng.value(range, 1) : rng.uniform(-range, range));
  }
  int size = c.taps - 1;
  for (int n : c.blocks) size = std::max(size, c.taps - 1 + appended(c, n));
  // The working area after the history is scratch: it starts as junk.
  Canary<float> want_state(rng.values(size, 4.0f, 2)), got_state(size);
  const float level = sixteen(c.kind) ? 30000.0f : 4.0f;
  const int two = c.taps > 1 ? rng.below(c.taps - 1) : 0;
  for (int j = 0; j < c.taps - 1; ++j) {
    const bool sample_slot = (c.taps - 1 - j) % c.factor == 0;
    const float sign = rng.below(2) ? 1.0f : -1.0f;
    if (c.history == History::kZero) {
      want_state[j] = 0.0f;
    } else if (c.history == History::kTwos) {
      want_state[j] = sign * (j == two && !sample_slot ? 2.0f : 0.0f);
    } else if (c.history == History::kJunk || sample_slot) {
      want_state[j] = rng.value(level);
    } else {
      want_state[j] = sign * 0.0f;
    }
  }
  std::copy(want_state.data(), want_state.data() + size, got_state.data());

  bool silent = c.history == History::kTwos;
  for (int n : c.blocks) {
    SCOPED_TRACE(testing::Message() << "block " << n);
    const int out = outputs(c, n);
    Canary<T> want_src(std::max(n, out)), want_dst(out);
    for (int i = 0; i < n; ++i) {
      if (silent) {
        want_src[i] = T{};
      } else if constexpr (std::is_same_v<T, float>) {
        want_src[i] = rng.value();
      } else {
        want_src[i] = rng.below(4) ? rng.sample() : static_cast<int16_t>(rng.below(200) - 100);
      }
    }
    Canary<T> got_src(want_src), got_dst(out);
    Canary<T>& want_out = c.in_place ? want_src : want_dst;
    Canary<T>& got_out = c.in_place ? got_src : got_dst;
    call<T>(c, true, want_src.data(), want_out.data(), want_state.data(), coeffs.data(), n);
    call<T>(c, false, got_src.data(), got_out.data(), got_state.data(), coeffs.data(), n);
    if (n > 0) silent = false;  // the first block that has samples
    if (!expect_same(want_out, got_out, "output") || !expect_same(want_state, got_state, "state")) {
      return;
    }
  }
}

void run(Rng& rng, const Config& c) { sixteen(c.kind) ? run<int16_t>(rng, c) : run<float>(rng, c); }

TEST(FirDiff, EveryFilterMatchesItsReference) {
  randomized(0x5eed0f1bu, [&](Rng& rng) {
    const History histories[] = {History::kZero, History::kJunk, History::kStuffed, History::kTwos};
    int round = 0;
    for (int taps = 1; taps <= 70; ++taps) {
      for (Kind kind : {Kind::kFir, Kind::kDecimate, Kind::kDecimate16, Kind::kInterpolate,
                        Kind::kInterpolate16}) {
        ++round;
        Config c{kind, taps, 1, {}, round % 3 == 0, histories[round % 4], round % 2 == 0};
        if (kind != Kind::kFir) c.factor = 1 + rng.below(8);
        for (int i = 0; i < 4; ++i) c.blocks.push_back(rng.below(interpolating(kind) ? 12 : 30));
        run(rng, c);
        if (::testing::Test::HasFailure()) return;  // one failing configuration is enough
      }
    }
    // Long blocks and filters: many full groups of outputs and taps.
    const Config large[] = {
        {Kind::kFir, 32, 1, {160, 160}, false, History::kJunk, false},
        {Kind::kFir, 128, 1, {160}, true, History::kZero, true},
        {Kind::kDecimate, 48, 3, {480, 479}, false, History::kJunk, false},
        {Kind::kDecimate16, 48, 3, {480}, false, History::kZero, true},
        {Kind::kDecimate, 37, 2, {257}, true, History::kJunk, true},
        {Kind::kDecimate, 29, 4, {203}, false, History::kZero, false},
        {Kind::kDecimate, 50, 7, {300}, false, History::kJunk, false},
        {Kind::kInterpolate, 48, 3, {160, 77}, false, History::kStuffed, false},
        {Kind::kInterpolate16, 48, 3, {160}, false, History::kZero, true},
        {Kind::kInterpolate, 48, 3, {100}, true, History::kStuffed, false},
        {Kind::kInterpolate, 61, 5, {64}, false, History::kJunk, true},
    };
    for (const Config& c : large) run(rng, c);
  });
}

}  // namespace
}  // namespace qel::test

// SPDX-License-Identifier: MIT
// FIR filters against the plain references: tap counts 1..70, factors 1..8,
// uneven blocks over several calls, specials in inputs, coefficients and
// history, in place and not, canaries past every output and past the state.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "ref/fir_ref.h"
#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

enum class Kind { kFir, kDecimate, kDecimate16, kInterpolate, kInterpolate16 };
constexpr Kind kKinds[] = {Kind::kFir, Kind::kDecimate, Kind::kDecimate16, Kind::kInterpolate,
                           Kind::kInterpolate16};
const char* name(Kind k) {
  constexpr const char* names[] = {"fir", "decimate", "decimate_int16", "interpolate",
                                   "interpolate_int16"};
  return names[static_cast<int>(k)];
}
bool sixteen(Kind k) { return k == Kind::kDecimate16 || k == Kind::kInterpolate16; }
bool interpolating(Kind k) { return k == Kind::kInterpolate || k == Kind::kInterpolate16; }

enum class History { kZero, kJunk, kStuffed };

struct Config {
  Kind kind;
  int taps;
  int factor;  // M or L; 1 for the block filter
  std::vector<int> blocks;
  bool special_coeffs;
  History history;
  bool in_place;
};

int appended(const Config& c, int n) {
  if (c.kind == Kind::kFir) return n;
  if (interpolating(c.kind)) return c.factor * n;
  return c.factor * (n / c.factor);
}
int outputs(const Config& c, int n) {
  if (c.kind == Kind::kFir) return n;
  if (interpolating(c.kind)) return c.factor * n;
  return n / c.factor;
}

std::vector<float> make_coeffs(Rng& rng, const Config& c) {
  std::vector<float> v;
  const float range = sixteen(c.kind) ? 0.3f : 1.0f;
  for (int k = 0; k < c.taps; ++k) {
    v.push_back(c.special_coeffs && rng.below(6) == 0 ? rng.value(range, 1)
                                                      : rng.uniform(-range, range));
  }
  return v;
}

// History: zeros, anything (specials included), or the stuffed layout of an
// interpolator, signed zeros in the zero slots.
void fill_history(Rng& rng, const Config& c, float* h) {
  const float range = sixteen(c.kind) ? 30000.0f : 4.0f;
  for (int j = 0; j < c.taps - 1; ++j) {
    const bool sample_slot = (c.taps - 1 - j) % c.factor == 0;
    switch (c.history) {
      case History::kZero:
        h[j] = 0.0f;
        break;
      case History::kJunk:
        h[j] = rng.value(range);
        break;
      case History::kStuffed:
        h[j] = sample_slot ? rng.value(range) : (rng.below(2) ? 0.0f : -0.0f);
        break;
    }
  }
}

void call(const Config& c, bool use_ref, const void* src, void* dst, float* state,
          const float* coeffs, int n) {
  const auto* fs = static_cast<const float*>(src);
  auto* fd = static_cast<float*>(dst);
  const auto* ss = static_cast<const int16_t*>(src);
  auto* sd = static_cast<int16_t*>(dst);
  switch (c.kind) {
    case Kind::kFir:
      use_ref ? ref::fir(fs, fd, state, coeffs, c.taps, n)
              : qel_flt_fir(fs, fd, state, coeffs, c.taps, n);
      break;
    case Kind::kDecimate:
      use_ref ? ref::fir_decimate(fs, fd, state, coeffs, c.taps, c.factor, n)
              : qel_flt_fir_decimate(fs, fd, state, coeffs, c.taps, c.factor, n);
      break;
    case Kind::kDecimate16:
      use_ref ? ref::fir_decimate_int16(ss, sd, state, coeffs, c.taps, c.factor, n)
              : qel_flt_fir_decimate_int16(ss, sd, state, coeffs, c.taps, c.factor, n);
      break;
    case Kind::kInterpolate:
      use_ref ? ref::fir_interpolate(fs, fd, state, coeffs, c.taps, c.factor, n)
              : qel_flt_fir_interpolate(fs, fd, state, coeffs, c.taps, c.factor, n);
      break;
    case Kind::kInterpolate16:
      use_ref ? ref::fir_interpolate_int16(ss, sd, state, coeffs, c.taps, c.factor, n)
              : qel_flt_fir_interpolate_int16(ss, sd, state, coeffs, c.taps, c.factor, n);
      break;
  }
}

// One block's input and output buffers; in place the output is the input.
template <typename T>
struct Io {
  Canary<T> src, dst;
  Io(int n, int out) : src(std::max(n, out)), dst(out) {}
};

template <typename T>
void expect_same(const Canary<T>& want, const Canary<T>& got, int n, const char* what) {
  if constexpr (std::is_same_v<T, float>) {
    expect_same_values(want.data(), got.data(), n, what);
  } else {
    for (int k = 0; k < n; ++k) ASSERT_EQ(want[k], got[k]) << what << " element " << k;
  }
  EXPECT_TRUE(got.intact()) << what << ": a cell past the end was written";
}

// Runs the calls of one configuration on the kernel and on the reference, from
// the same history, comparing outputs and the whole state after every call.
template <typename T>
void run(Rng& rng, const Config& c) {
  SCOPED_TRACE(testing::Message() << name(c.kind) << " taps " << c.taps << " factor " << c.factor
                                  << (c.in_place ? " in place" : ""));
  const std::vector<float> coeffs = make_coeffs(rng, c);
  int state_size = c.taps - 1;
  for (int n : c.blocks) state_size = std::max(state_size, c.taps - 1 + appended(c, n));
  Canary<float> want_state(state_size), got_state(state_size);
  fill_history(rng, c, want_state.data());
  std::copy(want_state.data(), want_state.data() + state_size, got_state.data());

  for (int n : c.blocks) {
    SCOPED_TRACE(testing::Message() << "block " << n);
    const int out = outputs(c, n);
    Io<T> want(n, out), got(n, out);
    for (int i = 0; i < n; ++i) {
      T x;
      if constexpr (std::is_same_v<T, float>) {
        x = rng.value();
      } else {
        x = rng.below(4) ? rng.sample() : static_cast<int16_t>(rng.below(200) - 100);
      }
      want.src[i] = got.src[i] = x;
    }
    T* want_dst = c.in_place ? want.src.data() : want.dst.data();
    T* got_dst = c.in_place ? got.src.data() : got.dst.data();
    call(c, true, want.src.data(), want_dst, want_state.data(), coeffs.data(), n);
    call(c, false, got.src.data(), got_dst, got_state.data(), coeffs.data(), n);
    expect_same(c.in_place ? want.src : want.dst, c.in_place ? got.src : got.dst, out, "output");
    expect_same_values(want_state, got_state, "state");
    if (::testing::Test::HasFailure()) return;
  }
}

void run(Rng& rng, const Config& c) { sixteen(c.kind) ? run<int16_t>(rng, c) : run<float>(rng, c); }

TEST(FirDiff, EveryKernelMatchesReference) {
  Rng rng(0x5eed0f1bu);
  const History histories[] = {History::kZero, History::kJunk, History::kStuffed};
  int round = 0;
  for (int taps = 1; taps <= 70; ++taps) {
    for (Kind kind : kKinds) {
      ++round;
      Config c{kind, taps, 1, {}, round % 3 == 0, histories[round % 3], round % 2 == 0};
      if (kind != Kind::kFir) c.factor = 1 + rng.below(8);
      for (int call = 0; call < 4; ++call)
        c.blocks.push_back(rng.below(interpolating(kind) ? 12 : 30));
      run(rng, c);
      if (::testing::Test::HasFailure()) return;
    }
  }
}

TEST(FirDiff, LargeBlocksMatchReference) {
  Rng rng(0x5eed0f1cu);
  const Config configs[] = {
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
  for (const Config& c : configs) run(rng, c);
}

// One signal fed in one block, in blocks of eight and in blocks of 3, 5, 1, 7
// (multiples of M for the decimator) gives the reference's single-call outputs
// and history.
TEST(FirDiff, SplitBlocksMatchOneBlock) {
  Rng rng(0x5eed0f1du);
  for (Kind kind : {Kind::kFir, Kind::kDecimate, Kind::kInterpolate}) {
    for (int taps : {1, 5, 13, 33}) {
      const int factor = kind == Kind::kFir ? 1 : 3;
      SCOPED_TRACE(testing::Message() << name(kind) << " taps " << taps);
      const Config c{kind, taps, factor, {}, false, History::kStuffed, false};
      const int total = 16 * factor;
      const std::vector<float> coeffs = make_coeffs(rng, c);
      const std::vector<float> in = rng.values(total);
      const int out_total = outputs(c, total);
      const int state_size = taps - 1 + appended(c, total);
      std::vector<float> hist(static_cast<size_t>(taps));
      fill_history(rng, c, hist.data());

      std::vector<float> want(static_cast<size_t>(out_total));
      std::vector<float> want_state(hist.begin(), hist.end() - 1);
      want_state.resize(static_cast<size_t>(state_size));
      call(c, true, in.data(), want.data(), want_state.data(), coeffs.data(), total);

      const std::vector<std::vector<int>> splits = {{16}, {8, 8}, {3, 5, 1, 7}};
      for (const std::vector<int>& split : splits) {
        Canary<float> got(out_total), state(state_size);
        std::copy(hist.begin(), hist.end() - 1, state.data());
        int at = 0, out_at = 0;
        for (int part : split) {
          const int n = part * factor;
          call(c, false, in.data() + at, got.data() + out_at, state.data(), coeffs.data(), n);
          at += n;
          out_at += outputs(c, n);
        }
        expect_same_values(want.data(), got.data(), out_total, "output");
        expect_same_values(want_state.data(), state.data(), taps - 1, "history");
        EXPECT_TRUE(got.intact() && state.intact());
      }
    }
  }
}

// Factor 1: the decimator and the interpolator are the block filter, bit for
// bit, final state included.
TEST(FirDiff, FactorOneIsTheBlockFilter) {
  Rng rng(0x5eed0f1eu);
  for (int taps : {1, 2, 9, 24}) {
    SCOPED_TRACE(taps);
    const std::vector<float> coeffs = rng.values(taps, 1.0f, 6);
    const std::vector<float> in = rng.values(19);
    std::vector<float> hist = rng.values(taps - 1);
    Canary<float> fir_out(19), dec_out(19), int_out(19);
    Canary<float> fir_state(taps - 1 + 19), dec_state(taps - 1 + 19), int_state(taps - 1 + 19);
    for (Canary<float>* s : {&fir_state, &dec_state, &int_state}) {
      std::copy(hist.begin(), hist.end(), s->data());
    }
    qel_flt_fir(in.data(), fir_out.data(), fir_state.data(), coeffs.data(), taps, 19);
    qel_flt_fir_decimate(in.data(), dec_out.data(), dec_state.data(), coeffs.data(), taps, 1, 19);
    qel_flt_fir_interpolate(in.data(), int_out.data(), int_state.data(), coeffs.data(), taps, 1,
                            19);
    expect_same_values(fir_out, dec_out, "decimator output");
    expect_same_values(fir_out, int_out, "interpolator output");
    expect_same_values(fir_state, dec_state, "decimator state");
    expect_same_values(fir_state, int_state, "interpolator state");
  }
}

}  // namespace
}  // namespace qel::test

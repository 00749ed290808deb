// SPDX-License-Identifier: MIT
// Test helpers: bit-exact comparison, special values, a deterministic random
// source and buffers with canary cells past the end.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "vector.h"

namespace qel::test {

inline constexpr float kInf = std::numeric_limits<float>::infinity();
inline constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
inline constexpr float kDenormMin = std::numeric_limits<float>::denorm_min();
inline constexpr float kFloatMax = std::numeric_limits<float>::max();
inline constexpr float kFloatMin = std::numeric_limits<float>::min();  // smallest normal

inline uint32_t bits(float x) {
  uint32_t u;
  std::memcpy(&u, &x, sizeof u);
  return u;
}
inline float from_bits(uint32_t u) {
  float x;
  std::memcpy(&x, &u, sizeof x);
  return x;
}

// Same bits, except that any NaN matches any NaN: the machines disagree on the
// NaN that inf - inf produces. `exact` compares NaN payloads too, for results
// that are copies of an operand (selections, fills, conjugates).
inline bool same_value(float a, float b, bool exact = false) {
  return (!exact && a != a && b != b) || bits(a) == bits(b);
}

// "1.5 (0x3fc00000)": the value and its bits, so -0 and NaN payloads show.
std::string describe(float x);

::testing::AssertionResult SameFloat(const char* want_expr, const char* got_expr, float want,
                                     float got);
#define EXPECT_SAME_FLOAT(want, got) EXPECT_PRED_FORMAT2(::qel::test::SameFloat, want, got)

// Special values worth mixing into any input: signed zeros, infinities, NaN,
// denormals, the extremes of the normal range.
const std::vector<float>& special_values();

// Deterministic random source. Floats come from raw std::mt19937 words: the
// engine is specified by the standard, its distributions are not, so the host
// and the M33 see one stream.
class Rng {
 public:
  explicit Rng(uint32_t seed) : engine_(seed) {}
  uint32_t word() { return static_cast<uint32_t>(engine_()); }
  // Uniform in [0, n) for n > 0.
  int below(int n) { return static_cast<int>(word() % static_cast<uint32_t>(n)); }
  // Uniform in [lo, hi).
  float uniform(float lo, float hi);
  // Mostly uniform in [-range, range); about one value in `one_in` is special.
  float value(float range = 4.0f, int one_in = 8);
  std::vector<float> values(int n, float range = 4.0f, int one_in = 8);
  int16_t sample() { return static_cast<int16_t>(word() >> 16); }

 private:
  std::mt19937 engine_;
};

// Lengths for a randomized test: every n in 0..70 (each mix of a grouped body
// and a remainder for groups of 2, 4 and 8), then a few large ones.
inline std::vector<int> diff_lengths() {
  std::vector<int> n;
  for (int i = 0; i <= 70; ++i) n.push_back(i);
  n.insert(n.end(), {127, 256, 513});
  return n;
}

// n elements followed by canary cells that a kernel must never write.
template <typename T>
class Canary {
 public:
  static constexpr int kGuard = 8;
  explicit Canary(int n, T fill = T{}) : n_(n), cells_(static_cast<size_t>(n + kGuard), fill) {
    for (int i = 0; i < kGuard; ++i) cells_[static_cast<size_t>(n + i)] = guard(i);
  }
  Canary(const std::vector<T>& init) : Canary(static_cast<int>(init.size())) {
    std::copy(init.begin(), init.end(), cells_.begin());
  }
  T* data() { return cells_.data(); }
  const T* data() const { return cells_.data(); }
  int size() const { return n_; }
  T& operator[](int i) { return cells_[static_cast<size_t>(i)]; }
  const T& operator[](int i) const { return cells_[static_cast<size_t>(i)]; }
  // True while every canary still holds its pattern.
  bool intact() const {
    for (int i = 0; i < kGuard; ++i) {
      const T g = guard(i);
      if (std::memcmp(&cells_[static_cast<size_t>(n_ + i)], &g, sizeof(T)) != 0) return false;
    }
    return true;
  }

 private:
  static T guard(int i) {
    if constexpr (std::is_floating_point_v<T>) {
      return from_bits(0x7fa5a500u + static_cast<uint32_t>(i));  // a signalling-NaN pattern
    } else {
      return static_cast<T>(0x5a5a + i);
    }
  }
  int n_;
  std::vector<T> cells_;
};

// Compares the first n values of two buffers (any NaN matches any NaN unless
// exact); returns whether they were the same.
bool expect_same_values(const float* want, const float* got, int n, const char* what = "",
                        bool exact = false);

// The same for canary buffers, whose canaries in `got` must be untouched.
template <typename T>
bool expect_same(const Canary<T>& want, const Canary<T>& got, const char* what = "",
                 bool exact = false) {
  bool same = want.size() == got.size() && got.intact();
  EXPECT_TRUE(same) << what << ": a cell past element " << got.size() << " was written";
  if constexpr (std::is_floating_point_v<T>) {
    return expect_same_values(want.data(), got.data(), want.size(), what, exact) && same;
  } else {
    for (int i = 0; i < want.size() && same; ++i) {
      same = want[i] == got[i];
      EXPECT_EQ(want[i], got[i]) << what << " element " << i;
    }
    return same;
  }
}

}  // namespace qel::test

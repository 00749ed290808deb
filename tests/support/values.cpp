// SPDX-License-Identifier: MIT
#include "support/values.h"

#include <cstdio>

namespace qel::test {

std::string describe(float x) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.9g (0x%08lx)", static_cast<double>(x),
                static_cast<unsigned long>(bits(x)));
  return buf;
}

::testing::AssertionResult SameFloat(const char* want_expr, const char* got_expr, float want,
                                     float got) {
  if (same_value(want, got)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << got_expr << " is " << describe(got) << ", want "
                                       << want_expr << " = " << describe(want);
}

const std::vector<float>& special_values() {
  static const std::vector<float> v = {
      0.0f,       -0.0f,       kInf,
      -kInf,      kNaN,        -kNaN,
      kDenormMin, -kDenormMin, 1e-40f,
      -3e-39f,    kFloatMin,   -kFloatMin,
      kFloatMax,  -kFloatMax,  1.0f,
      -1.0f,      1e20f,       -3e19f,
      1.0e-20f,   65504.0f,    from_bits(0x7fc0beefu)};  // a NaN with a payload
  return v;
}

float Rng::uniform(float lo, float hi) {
  const float u = static_cast<float>(word() >> 8) * 0x1p-24f;  // [0, 1), exact
  return lo + (hi - lo) * u;
}

float Rng::value(float range, int one_in) {
  if (one_in > 0 && below(one_in) == 0) {
    const auto& s = special_values();
    return s[static_cast<size_t>(below(static_cast<int>(s.size())))];
  }
  return uniform(-range, range);
}

std::vector<float> Rng::values(int n, float range, int one_in) {
  std::vector<float> v;
  v.reserve(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) v.push_back(value(range, one_in));
  return v;
}

bool expect_same_values(const float* want, const float* got, int n, const char* what, bool exact) {
  int reported = 0;
  for (int i = 0; i < n && reported < 5; ++i) {
    if (!same_value(want[i], got[i], exact)) {
      ADD_FAILURE() << what << " element " << i << " of " << n << ": got " << describe(got[i])
                    << ", want " << describe(want[i]);
      ++reported;
    }
  }
  return reported == 0;
}

}  // namespace qel::test

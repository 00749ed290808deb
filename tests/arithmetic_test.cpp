// SPDX-License-Identifier: MIT
// Scaling, addition with floors, minimum, maximum and clipping: hand-worked
// cases for every tie and NaN winner, the in-place rules and the driving count.
#include <gtest/gtest.h>

#include <vector>

#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

// Length 5 puts a case both in a group of 4 (indices 0..3) and in the
// remainder (index 4); 9 does the same for groups of 8.
constexpr int kLen4 = 5;
constexpr int kLen8 = 9;

TEST(Arithmetic, ScaleTwoWritesExactlyADimElementsOfB) {
  float a[3] = {1.0f, -2.0f, 0.5f};
  Canary<float> bre(5, 7.0f), bim(5, 7.0f);
  qel_cpx_vec A = {3, a, a};
  qel_cpx_vec B = {5, bre.data(), bim.data()};
  qel_cpx_vec_scale2(&A, 2.0f, &B);
  const float want[5] = {2.0f, -4.0f, 1.0f, 7.0f, 7.0f};
  expect_same_values(want, bre.data(), 5, "re");
  expect_same_values(want, bim.data(), 5, "im");
  EXPECT_EQ(B.dim, 5);

  Canary<float> out(3, 7.0f);
  qel_flt_vec R = {3, a}, S = {2, out.data()};  // B's dim shorter, its memory long enough
  qel_flt_vec_scale2(&R, -1.0f, &S);
  const float want_r[3] = {-1.0f, 2.0f, -0.5f};
  expect_same_values(want_r, out.data(), 3);
  EXPECT_TRUE(out.intact());
  EXPECT_EQ(S.dim, 2);
}

TEST(Arithmetic, ScaleAddWithBEqualAStoresBeforeReadingOnlyInTheRealForm) {
  float re[kLen8], im[kLen8], d[kLen8];
  for (int k = 0; k < kLen8; ++k) re[k] = im[k] = d[k] = 3.0f;
  qel_cpx_vec X = {kLen8, re, im};
  qel_cpx_vec_scale_add(&X, 0.5f, &X);
  qel_flt_vec A = {kLen8, d};
  qel_flt_vec_scale_add(&A, 0.5f, &A);
  for (int k = 0; k < kLen8; ++k) {
    EXPECT_SAME_FLOAT(4.5f, re[k]);  // 3*0.5 + 3
    EXPECT_SAME_FLOAT(4.5f, im[k]);
    EXPECT_SAME_FLOAT(3.0f, d[k]);  // 2*(3*0.5)
  }
}

TEST(Arithmetic, PairwiseBiasWithBEqualAGivesAPlusAScale) {
  float d[kLen8], re[kLen8], im[kLen8];
  for (int k = 0; k < kLen8; ++k) d[k] = re[k] = im[k] = 2.0f;
  qel_flt_vec A = {kLen8, d};
  qel_flt_vec_pairwise_bias(&A, &A, 0.25f);
  qel_cpx_vec X = {kLen8, re, im};
  qel_cpx_vec_pairwise_bias(&X, &X, 0.25f);
  for (int k = 0; k < kLen8; ++k) {
    EXPECT_SAME_FLOAT(2.5f, d[k]);
    EXPECT_SAME_FLOAT(2.5f, re[k]);
    EXPECT_SAME_FLOAT(2.5f, im[k]);
  }
}

TEST(Arithmetic, GainRampAdvancesByRepeatedAddition) {
  std::vector<float> ones(12, 1.0f);
  Canary<float> y(12);
  qel_fl_mul_step(y.data(), ones.data(), 0.0f, 0.1f, 12);
  EXPECT_SAME_FLOAT(0.0f, y[0]);
  EXPECT_SAME_FLOAT(0.1f, y[1]);
  // Ten single-precision additions of 0.1f land one ulp above 1.
  EXPECT_SAME_FLOAT(from_bits(0x3f800001u), y[10]);
  EXPECT_TRUE(y.intact());

  const float x[3] = {1.5f, -2.0f, kInf};
  float z[3];
  qel_fl_mul_step(z, x, -3.0f, 0.0f, 3);  // step 0 is plain scaling
  const float want[3] = {-4.5f, 6.0f, -kInf};
  expect_same_values(want, z, 3);
}

struct FloorCase {
  float value, floor, want;
  const char* why;
};
constexpr FloorCase kFloorCases[] = {
    {2.0f, 2.0f, 2.0f, "equal to the floor keeps the value"},
    {-0.0f, 0.0f, -0.0f, "-0 under a +0 floor stays -0"},
    {0.0f, -0.0f, 0.0f, "+0 over a -0 floor stays +0"},
    {kNaN, 1.0f, kNaN, "a NaN value is kept"},
    {-5.0f, kNaN, -5.0f, "a NaN floor keeps every value"},
    {-5.0f, -1.0f, -1.0f, "below the floor is raised"},
    {3.0f, -1.0f, 3.0f, "above the floor is kept"},
    {-kInf, -kFloatMax, -kFloatMax, "-inf is raised"},
};

TEST(Arithmetic, FloorsReplaceOnlyWhenStrictlyBelow) {
  for (const FloorCase& c : kFloorCases) {
    SCOPED_TRACE(c.why);
    // The value as a sum value + (-0) keeps its sign and its bits.
    std::vector<float> a(kLen8, c.value), zero(kLen8, -0.0f);
    Canary<float> sum(kLen4), floored(kLen8), diff(kLen8), sub(kLen8);
    qel_fl_add_max(a.data(), zero.data(), sum.data(), c.floor, kLen4);
    std::vector<float> want4(kLen4, c.want), want8(kLen8, c.want);
    expect_same_values(want4.data(), sum.data(), kLen4, "fl_add_max");
    EXPECT_TRUE(sum.intact());

    qel_fl_max(a.data(), floored.data(), c.floor, kLen8);
    expect_same_values(want8.data(), floored.data(), kLen8, "fl_max");
    EXPECT_TRUE(floored.intact());
    EXPECT_SAME_FLOAT(c.value, a[0]);  // A only read

    qel_flt_vec A = {kLen8, a.data()}, B = {kLen8, sub.data()};
    qel_flt_vec_subtract_max(&A, 0.0f, &B, c.floor);  // b = 0: the same as fl_max
    expect_same_values(want8.data(), sub.data(), kLen8, "subtract_max");
  }
}

TEST(Arithmetic, AddMaxFloorsTheRoundedSum) {
  const float a[kLen4] = {1.0f, 0.5f, kInf, 1e30f, -0.0f};
  const float b[kLen4] = {1.0f, 1.5f, -kInf, -1e30f, -0.0f};
  Canary<float> c(kLen4);
  qel_fl_add_max(a, b, c.data(), 2.0f, kLen4);
  // 2 equals the floor; inf - inf is NaN and kept; +0 and -0 are raised to 2.
  const float want[kLen4] = {2.0f, 2.0f, kNaN, 2.0f, 2.0f};
  expect_same_values(want, c.data(), kLen4);
}

struct CeilingCase {
  float alpha, a, ceiling, want;
  const char* why;
};
constexpr CeilingCase kCeilingCases[] = {
    {5.0f, 1.0f, 4.0f, 4.0f, "a difference equal to the ceiling stays"},
    {5.0f, 1.0f, 3.0f, 3.0f, "above the ceiling is lowered"},
    {5.0f, 1.0f, 9.0f, 4.0f, "below the ceiling stays"},
    {kInf, kInf, 1.0f, kNaN, "a NaN difference stays"},
    {5.0f, 1.0f, kNaN, 4.0f, "a NaN ceiling keeps the difference"},
    {0.0f, 0.0f, -0.0f, 0.0f, "+0 over a -0 ceiling is not greater"},
};

TEST(Arithmetic, SubtractMinLowersOnlyWhenStrictlyAbove) {
  for (const CeilingCase& c : kCeilingCases) {
    SCOPED_TRACE(c.why);
    std::vector<float> a(3, c.a), ceiling(3, c.ceiling);
    Canary<float> out(3);
    qel_flt_vec A = {3, a.data()}, B = {3, ceiling.data()}, C = {3, out.data()};
    qel_flt_vec_subtract_min(&A, &B, c.alpha, &C);
    std::vector<float> want(3, c.want);
    expect_same_values(want.data(), out.data(), 3);
    EXPECT_TRUE(out.intact());
    qel_flt_vec_subtract_min(&A, &B, c.alpha, &A);  // C = A limits as usual
    expect_same_values(want.data(), a.data(), 3, "C = A");
  }
}

TEST(Arithmetic, SubtractMinWithCeilingSharingOutputLimitsNothing) {
  float a[3] = {1.0f, -2.0f, 0.5f};
  float c[3] = {-100.0f, -100.0f, -100.0f};
  qel_flt_vec A = {3, a}, C = {3, c};
  qel_flt_vec_subtract_min(&A, &C, 10.0f, &C);
  const float want[3] = {9.0f, 12.0f, 9.5f};
  expect_same_values(want, c, 3);
}

TEST(Arithmetic, InPlaceSumsAndDifferences) {
  float a[kLen4] = {1.0f, 2.0f, 3.0f, 4.0f, 5.0f};
  float b[kLen4] = {0.5f, 0.5f, 0.5f, 0.5f, 0.5f};
  qel_flt_vec A = {kLen4, a}, B = {kLen4, b};
  qel_flt_vec_add(&A, &B, &A);
  const float sum[kLen4] = {1.5f, 2.5f, 3.5f, 4.5f, 5.5f};
  expect_same_values(sum, a, kLen4, "add C = A");

  float re_a[2] = {1.0f, 2.0f}, im_a[2] = {3.0f, 4.0f};
  float re_b[2] = {0.25f, -1.0f}, im_b[2] = {1.0f, kInf};
  qel_cpx_vec X = {2, re_a, im_a}, Y = {2, re_b, im_b};
  qel_cpx_vec_subtract(&X, &Y, &Y);
  const float want_re[2] = {0.75f, 3.0f}, want_im[2] = {2.0f, -kInf};
  expect_same_values(want_re, re_b, 2, "subtract re");
  expect_same_values(want_im, im_b, 2, "subtract im");

  qel_flt_vec_add_flt(&A, -0.5f);
  const float shifted[kLen4] = {1.0f, 2.0f, 3.0f, 4.0f, 5.0f};
  expect_same_values(shifted, a, kLen4, "add_flt");
}

struct CpxSelectCase {
  float ar, ai, br, bi;
  float min_re, min_im, max_re, max_im;
  const char* why;
};
constexpr CpxSelectCase kCpxSelectCases[] = {
    {3, 4, 5, 0, 5, 0, 5, 0, "equal power 25, different phase: B both times"},
    {1, 0, 0, 2, 1, 0, 0, 2, "power 1 against 4"},
    {-0.0f, 0, 0, -0.0f, 0, -0.0f, 0, -0.0f, "zero powers tie: B's signs"},
    {kNaN, 0, 1, 1, 1, 1, 1, 1, "NaN power in A: B"},
    {1, 1, 0, kNaN, 0, kNaN, 0, kNaN, "NaN power in B: B"},
    {kInf, 0, 0, -kInf, 0, -kInf, 0, -kInf, "both infinite: a tie, B"},
    {2, -3, 1, 1, 1, 1, 2, -3, "both parts come from the same source"},
};

TEST(Arithmetic, ComplexSelectionRanksByPowerAndBWinsTies) {
  for (const CpxSelectCase& c : kCpxSelectCases) {
    SCOPED_TRACE(c.why);
    std::vector<float> ar(kLen4, c.ar), ai(kLen4, c.ai), br(kLen4, c.br), bi(kLen4, c.bi);
    qel_cpx_vec A = {kLen4, ar.data(), ai.data()}, B = {kLen4, br.data(), bi.data()};
    Canary<float> lo_re(kLen4), lo_im(kLen4), hi_re(kLen4), hi_im(kLen4);
    qel_cpx_vec lo = {kLen4, lo_re.data(), lo_im.data()}, hi = {kLen4, hi_re.data(), hi_im.data()};
    qel_cpx_vec_min(&A, &B, &lo);
    qel_cpx_vec_max(&A, &B, &hi);
    for (int k = 0; k < kLen4; ++k) {
      EXPECT_SAME_FLOAT(c.min_re, lo_re[k]);
      EXPECT_SAME_FLOAT(c.min_im, lo_im[k]);
      EXPECT_SAME_FLOAT(c.max_re, hi_re[k]);
      EXPECT_SAME_FLOAT(c.max_im, hi_im[k]);
    }
    EXPECT_TRUE(lo_re.intact() && lo_im.intact() && hi_re.intact() && hi_im.intact());
  }
}

struct RealSelectCase {
  float a, b, min, max;
  const char* why;
};
constexpr RealSelectCase kRealSelectCases[] = {
    {kNaN, 1.0f, 1.0f, 1.0f, "NaN in A: B"},
    {1.0f, kNaN, kNaN, kNaN, "NaN in B: B"},
    {0.0f, -0.0f, -0.0f, -0.0f, "+0 and -0 tie: B"},
    {-0.0f, 0.0f, 0.0f, 0.0f, "-0 and +0 tie: B"},
    {2.0f, 2.0f, 2.0f, 2.0f, "equal"},
    {-1.0f, 3.0f, -1.0f, 3.0f, "ordered"},
    {-kInf, kInf, -kInf, kInf, "infinities"},
};

TEST(Arithmetic, RealSelectionTakesAOnlyWhenStrictly) {
  for (const RealSelectCase& c : kRealSelectCases) {
    SCOPED_TRACE(c.why);
    std::vector<float> a(kLen4, c.a), b(kLen4, c.b);
    Canary<float> lo(kLen4), hi(kLen4);
    qel_flt_vec A = {kLen4, a.data()}, B = {kLen4, b.data()}, L = {kLen4, lo.data()},
                H = {kLen4, hi.data()};
    qel_flt_vec_min(&A, &B, &L);
    qel_flt_vec_max(&A, &B, &H);
    std::vector<float> want_lo(kLen4, c.min), want_hi(kLen4, c.max);
    expect_same_values(want_lo.data(), lo.data(), kLen4, "min");
    expect_same_values(want_hi.data(), hi.data(), kLen4, "max");
    EXPECT_TRUE(lo.intact() && hi.intact());
  }
}

struct MaxValueCase {
  float value, threshold, want;
  const char* why;
};
constexpr MaxValueCase kMaxValueCases[] = {
    {-3.0f, 0.0f, 0.0f, "negative becomes +0"},
    {-0.0f, 0.0f, 0.0f, "-0 under +0 becomes +0: the threshold wins ties"},
    {0.0f, -0.0f, -0.0f, "+0 over -0 is a tie too"},
    {2.5f, 0.0f, 2.5f, "positive is copied"},
    {kNaN, 1.0f, 1.0f, "a NaN element yields the threshold"},
    {5.0f, kNaN, kNaN, "a NaN threshold yields NaN"},
    {kInf, kFloatMax, kInf, "+inf is above everything finite"},
};

TEST(Arithmetic, MaxValueThresholdWinsTiesAndNaNElements) {
  for (const MaxValueCase& c : kMaxValueCases) {
    SCOPED_TRACE(c.why);
    std::vector<float> a(kLen8, c.value);
    Canary<float> b(kLen8);
    qel_flt_vec A = {kLen8, a.data()}, B = {kLen8, b.data()};
    qel_flt_vec_max_value(&A, c.threshold, &B);
    std::vector<float> want(kLen8, c.want);
    expect_same_values(want.data(), b.data(), kLen8);
    EXPECT_TRUE(b.intact());
    qel_flt_vec_max_value(&A, c.threshold, &A);
    expect_same_values(want.data(), a.data(), kLen8, "in place");
  }
}

struct MagFloorCase {
  float re, im, bound, want_re, want_im;
  const char* why;
};
constexpr MagFloorCase kMagFloorCases[] = {
    {0.5f, 0.5f, 1.0f, 1.0f, 0.0f, "power 0.5 below 1: raised, phase lost"},
    {1.0f, 0.0f, 1.0f, 1.0f, 0.0f, "power equal to the bound squared: unchanged"},
    {0.0f, -1.0f, 1.0f, 0.0f, -1.0f, "equal power, other phase: unchanged"},
    {1.0f, 1.0f, -2.0f, -2.0f, 0.0f, "the bound's sign is stored, im +0"},
    {-0.1f, -0.0f, 0.5f, 0.5f, 0.0f, "im becomes +0, not -0"},
    {kNaN, 0.0f, 1.0f, kNaN, 0.0f, "a NaN part: unchanged"},
    {0.1f, 0.1f, kNaN, 0.1f, 0.1f, "a NaN bound: unchanged"},
    {0.0f, -0.0f, 0.0f, 0.0f, -0.0f, "a bound of 0 changes nothing"},
};

TEST(Arithmetic, ComplexMaxValueRaisesOnlyStrictlyWeakerElements) {
  for (const MagFloorCase& c : kMagFloorCases) {
    SCOPED_TRACE(c.why);
    Canary<float> re(3, c.re), im(3, c.im);
    qel_cpx_vec A = {3, re.data(), im.data()};
    qel_cpx_vec_max_value(&A, c.bound);
    for (int k = 0; k < 3; ++k) {
      EXPECT_SAME_FLOAT(c.want_re, re[k]);
      EXPECT_SAME_FLOAT(c.want_im, im[k]);
    }
    EXPECT_TRUE(re.intact() && im.intact());
  }
}

struct SmoothCase {
  float value, slope, want;
  const char* why;
};
constexpr SmoothCase kSmoothCases[] = {
    {3.0f, 0.5f, 2.0f, "excess 2 halved"},
    {1.0f, 0.5f, 1.0f, "equal to the threshold: unchanged"},
    {3.0f, 0.0f, 1.0f, "slope 0 clamps to the threshold"},
    {3.0f, 2.0f, 5.0f, "slope above 1 expands"},
    {-4.0f, kNaN, -4.0f, "below: unchanged whatever the slope"},
    {kNaN, 0.5f, kNaN, "a NaN element: unchanged"},
};

TEST(Arithmetic, SmoothCompressesOnlyAboveThreshold) {
  for (const SmoothCase& c : kSmoothCases) {
    SCOPED_TRACE(c.why);
    Canary<float> a(2, c.value);
    const float slope[2] = {c.slope, c.slope};
    qel_flt_vec A = {2, a.data()}, B = {2, const_cast<float*>(slope)};
    qel_flt_vec_smooth(&A, &B, 1.0f);
    const float want[2] = {c.want, c.want};
    expect_same_values(want, a.data(), 2);
    EXPECT_TRUE(a.intact());
  }
}

}  // namespace
}  // namespace qel::test

// SPDX-License-Identifier: MIT
// Spectra: hand-worked products, guarded divisions, powers and sums, with the
// platform math calls they make.
#include <gtest/gtest.h>

#include <vector>

#include "support/fake_platform.h"
#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

constexpr float kEps = 1e-8f;      // the float nearest 1e-8
constexpr float kTiny = 0x1p-12f;  // its square, 2^-24, is half an ulp of 1

// ---- Products ----

struct ProductCase {
  float ar, ai, br, bi;
  float re, im;            // A * B
  float conj_re, conj_im;  // A * conj(B)
  const char* why;
};
constexpr ProductCase kProducts[] = {
    {1, 2, 3, 4, -5, 10, 11, 2, "1+2i and 3+4i"},
    {3, 4, 1, 2, -5, 10, 11, -2, "swapped operands: the conjugate moves, im flips"},
    {0, 1, 0, 1, -1, 0, 1, 0, "i*i = -1, i*conj(i) = 1"},
    {2, 0, 0, -3, 0, -6, 0, 6, "real times imaginary"},
    {kInf, 0, 1, 0, kInf, kNaN, kInf, kNaN, "inf*0 in the im part is NaN"},
};

TEST(Spectra, ProductsFollowTheirFormulas) {
  for (const ProductCase& c : kProducts) {
    SCOPED_TRACE(c.why);
    // Seven copies: groups of 2 and 4 plus their tails all see the case.
    constexpr int n = 7;
    std::vector<float> ar(n, c.ar), ai(n, c.ai), br(n, c.br), bi(n, c.bi);
    qel_cpx_vec A{n, ar.data(), ai.data()}, B{n, br.data(), bi.data()};
    for (int conj = 0; conj < 2; ++conj) {
      Canary<float> cr(n), ci(n);
      qel_cpx_vec C = cpx_record(cr, ci);
      (conj ? qel_cpx_vec_dot_product_conj : qel_cpx_vec_dot_product)(&A, &B, &C);
      for (int k = 0; k < n; ++k) {
        EXPECT_SAME_FLOAT(conj ? c.conj_re : c.re, cr[k]) << "conj " << conj << " k " << k;
        EXPECT_SAME_FLOAT(conj ? c.conj_im : c.im, ci[k]) << "conj " << conj << " k " << k;
      }
      EXPECT_TRUE(cr.intact() && ci.intact());
    }
  }
}

TEST(Spectra, ProductCountsComeFromTheDrivingRecord) {
  std::vector<float> ar(8, 1.0f), ai(8, 2.0f), br(8, 3.0f), bi(8, 4.0f);
  qel_cpx_vec A{8, ar.data(), ai.data()}, B{8, br.data(), bi.data()};
  Canary<float> cr(3), ci(3);
  qel_cpx_vec C = cpx_record(cr, ci);  // dim 3: only 3 elements written
  qel_cpx_vec_dot_product(&A, &B, &C);
  EXPECT_SAME_FLOAT(-5.0f, cr[2]);
  EXPECT_TRUE(cr.intact() && ci.intact());
  qel_cpx_vec_dot_product_conj(&A, &B, &C);
  EXPECT_SAME_FLOAT(11.0f, cr[2]);
  EXPECT_TRUE(cr.intact() && ci.intact());

  // maddc and the real product run to A->dim = 8 whatever C->dim says.
  std::vector<float> mr(8, 1.0f), mi(8, 1.0f);
  qel_cpx_vec M{0, mr.data(), mi.data()};
  qel_cpx_vec_dot_product_maddc_conj(&A, &B, &M);
  EXPECT_EQ(mr, std::vector<float>(8, 12.0f));
  EXPECT_EQ(mi, std::vector<float>(8, 3.0f));
  EXPECT_EQ(M.dim, 0);
  std::vector<float> out(8);
  qel_flt_vec X{8, ar.data()}, Y{1, br.data()}, Z{1, out.data()};
  qel_flt_vec_dot_product(&X, &Y, &Z);
  EXPECT_EQ(out, std::vector<float>(8, 3.0f));
}

TEST(Spectra, MaddcAddsTheConjugateProductAsOneTerm) {
  // p = 2^-24 + 2^-24 = 2^-23: 1 + p is exact, while adding the halves one
  // after the other rounds back to 1 twice.
  float ar = kTiny, ai = kTiny, br = kTiny, bi = kTiny, cr = 1.0f, ci = 1.0f;
  qel_cpx_vec A{1, &ar, &ai}, B{1, &br, &bi}, C{1, &cr, &ci};
  qel_cpx_vec_dot_product_maddc_conj(&A, &B, &C);
  EXPECT_SAME_FLOAT(1.0f + 0x1p-23f, cr);
  EXPECT_SAME_FLOAT(1.0f, ci);

  // Twice over 1+1i with 1+2i, 3+4i: 12+3i, then 23+5i.
  float xr = 1, xi = 2, yr = 3, yi = 4, zr = 1, zi = 1;
  qel_cpx_vec X{1, &xr, &xi}, Y{1, &yr, &yi}, Z{1, &zr, &zi};
  qel_cpx_vec_dot_product_maddc_conj(&X, &Y, &Z);
  EXPECT_SAME_FLOAT(12.0f, zr);
  EXPECT_SAME_FLOAT(3.0f, zi);
  qel_cpx_vec_dot_product_maddc_conj(&X, &Y, &Z);
  EXPECT_SAME_FLOAT(23.0f, zr);
  EXPECT_SAME_FLOAT(5.0f, zi);
}

TEST(Spectra, InPlaceProductsMatchSeparateOutputs) {
  // Squaring in place: 1+2i becomes -3+4i (A, B and C the same vector).
  std::vector<float> re = {1, 1, 0, 2, 3}, im = {2, 2, 1, 0, -1};
  qel_cpx_vec V{5, re.data(), im.data()};
  qel_cpx_vec_dot_product(&V, &V, &V);
  EXPECT_EQ(re, (std::vector<float>{-3, -3, -1, 4, 8}));
  EXPECT_EQ(im, (std::vector<float>{4, 4, 0, 0, -6}));

  // Conjugate product with C = B: 1+2i times conj(3+4i) = 11+2i.
  std::vector<float> ar(5, 1), ai(5, 2), br(5, 3), bi(5, 4);
  qel_cpx_vec A{5, ar.data(), ai.data()}, B{5, br.data(), bi.data()};
  qel_cpx_vec_dot_product_conj(&A, &B, &B);
  EXPECT_EQ(br, std::vector<float>(5, 11));
  EXPECT_EQ(bi, std::vector<float>(5, 2));

  // Real weighting in place, re pass then im pass.
  std::vector<float> wr = {1, 2, 3, 4, 5}, wi = {-1, -2, -3, -4, -5}, g = {2, 0.5f, -1, 0, 4};
  qel_cpx_vec W{5, wr.data(), wi.data()};
  qel_flt_vec G{0, g.data()};
  qel_cpx_vec_dot_product_flt(&W, &G, &W);
  EXPECT_EQ(wr, (std::vector<float>{2, 1, -3, 0, 20}));
  EXPECT_EQ(wi, (std::vector<float>{-2, -1, 3, -0.0f, -20}));
  EXPECT_SAME_FLOAT(-0.0f, wi[3]);
}

TEST(Spectra, ConjugationFlipsOnlyTheSignBit) {
  const std::vector<float> re = {1.0f, 0.0f, -0.0f, kNaN, from_bits(0x7f800001u), kDenormMin};
  const std::vector<float> im = {2.0f, 0.0f, -0.0f, from_bits(0x7fa00001u), from_bits(0xffc12345u),
                                 -kInf};
  const int n = static_cast<int>(re.size());
  Canary<float> br(n), bi(n);
  std::vector<float> ar = re, ai = im;
  qel_cpx_vec A{n, ar.data(), ai.data()}, B = cpx_record(br, bi);
  qel_cpx_vec_conj(&A, &B);
  for (int k = 0; k < n; ++k) {
    SCOPED_TRACE(k);
    EXPECT_EQ(bits(re[k]), bits(br[k]));  // a signalling NaN stays as it was
    EXPECT_EQ(bits(im[k]) ^ 0x80000000u, bits(bi[k]));
  }
  EXPECT_TRUE(br.intact() && bi.intact());
  qel_cpx_vec_conj(&A, &A);  // in place, twice: every bit back
  qel_cpx_vec_conj(&A, &A);
  for (int k = 0; k < n; ++k) EXPECT_EQ(bits(im[k]), bits(ai[k])) << k;
}

// ---- Division ----

// The guard of element k of n: grouped (divide by kEps) below 4*(n/4).
bool grouped(int k, int n) { return k < n / 4 * 4; }

struct GuardCase {
  float num, den;
  float in_group, in_tail;
  const char* why;
};
const GuardCase kGuards[] = {
    {1.0f, 0.0f, 100000000.0f, 100000000.0f, "1 over +0: 1e8 in both forms"},
    {1.0f, -0.0f, 100000000.0f, 100000000.0f, "-0 is guarded like +0, result positive"},
    {1.3f, 0.0f, 130000000.0f, 129999992.0f, "1.3/eps and 1.3*1e8 differ by one ulp"},
    {-1.3f, -0.0f, -130000000.0f, -129999992.0f, "the numerator keeps its sign"},
    {0.0f, 0.0f, 0.0f, 0.0f, "0 over 0 is 0"},
    {1.0f, kDenormMin, kInf, kInf, "a denormal is no zero: divides to inf"},
    {1.0f, kNaN, kNaN, kNaN, "NaN is no zero"},
    {1.0f, kInf, 0.0f, 0.0f, "finite over inf"},
    {-3.0f, -1.5f, 2.0f, 2.0f, "plain quotient"},
};

TEST(Spectra, DivisionGuardDependsOnTheElementsPosition) {
  for (const GuardCase& c : kGuards) {
    SCOPED_TRACE(c.why);
    for (int n = 0; n <= 13; ++n) {
      SCOPED_TRACE(n);
      std::vector<float> a(n, c.num), b(n, c.den), alpha_b(n, c.den - 0.5f);
      Canary<float> q(n), r(n), cre(n), cim(n);
      qel_flt_vec A{n, a.data()}, B{0, b.data()}, Q = flt_record(q), R = flt_record(r);
      qel_flt_vec AB{0, alpha_b.data()};
      qel_flt_vec_dot_division(&A, &B, &Q);
      qel_flt_vec_ratio_flt(&A, &AB, 0.5f, &R);  // 0.5 + (den - 0.5): the same den here
      std::vector<float> ai(n, -c.num);
      qel_cpx_vec CA{n, a.data(), ai.data()}, CC = cpx_record(cre, cim);
      qel_cpx_vec_dot_division_flt(&CA, &B, &CC);
      for (int k = 0; k < n; ++k) {
        const float want = grouped(k, n) ? c.in_group : c.in_tail;
        EXPECT_SAME_FLOAT(want, q[k]) << "dot_division k " << k;
        EXPECT_SAME_FLOAT(want, cre[k]) << "division_flt re k " << k;
        EXPECT_SAME_FLOAT(-want, cim[k]) << "division_flt im k " << k;
        if (c.den == 0.0f || c.den == -1.5f) {
          EXPECT_SAME_FLOAT(want, r[k]) << "ratio k " << k;
        }
      }
      EXPECT_TRUE(q.intact() && r.intact() && cre.intact() && cim.intact());
    }
  }
}

TEST(Spectra, DivisionWorkedExamples) {
  // dim 5, 1.3 over zeros: 130000000 in elements 0-3, 129999992 in element 4.
  std::vector<float> a(5, 1.3f), b(5, 0.0f);
  qel_flt_vec A{5, a.data()}, B{5, b.data()};
  qel_flt_vec_dot_division(&A, &B, &A);  // in place on A
  EXPECT_EQ(a, (std::vector<float>{130000000, 130000000, 130000000, 130000000, 129999992}));

  // ratio: the zero test is on alpha + b.
  std::vector<float> num = {1, 1, 1, 1, 1}, den = {-0.5f, 0, -0.5f, 0, -0.5f}, out(5);
  qel_flt_vec N{5, num.data()}, D{5, den.data()}, O{5, out.data()};
  qel_flt_vec_ratio_flt(&N, &D, 0.5f, &O);
  EXPECT_EQ(out, (std::vector<float>{100000000, 2, 100000000, 2, 100000000}));

  // Part by part: 6+8i over 2+0i is 3 + 800000000i; over 2+4i it is 3+2i.
  std::vector<float> xr = {6, 6}, xi = {8, 8}, yr = {2, 2}, yi = {0, 4};
  qel_cpx_vec X{2, xr.data(), xi.data()}, Y{2, yr.data(), yi.data()};
  qel_cpx_vec_dot_division(&X, &Y, &Y);  // in place on B
  EXPECT_EQ(yr, (std::vector<float>{3, 3}));
  EXPECT_EQ(yi, (std::vector<float>{800000000, 2}));
  std::vector<float> zr = {1, 1}, zi = {-1, 1}, wr = {-0.0f, kDenormMin}, wi = {kNaN, -0.0f};
  qel_cpx_vec Z{2, zr.data(), zi.data()}, W{2, wr.data(), wi.data()};
  qel_cpx_vec_dot_division(&Z, &W, &Z);
  EXPECT_EQ(zr, (std::vector<float>{100000000, kInf}));
  EXPECT_SAME_FLOAT(kNaN, zi[0]);
  EXPECT_SAME_FLOAT(100000000.0f, zi[1]);
}

TEST(Spectra, FlDivisionRepairsTheDenominatorFirst) {
  float a[2] = {1, 4}, b[2] = {0, 2}, c[2];
  qel_fl_division(a, b, c, 2);
  EXPECT_SAME_FLOAT(100000000.0f, c[0]);
  EXPECT_SAME_FLOAT(2.0f, c[1]);
  EXPECT_SAME_FLOAT(kEps, b[0]);
  EXPECT_SAME_FLOAT(2.0f, b[1]);
  qel_fl_division(a, b, c, 2);  // a second call gives the same quotients
  EXPECT_SAME_FLOAT(100000000.0f, c[0]);
  EXPECT_SAME_FLOAT(2.0f, c[1]);

  // A and B one array: the repair is read back as the numerator, eps/eps = 1.
  float same[3] = {0, 3, -0.0f}, q[3];
  qel_fl_division(same, same, q, 3);
  EXPECT_SAME_FLOAT(1.0f, q[0]);
  EXPECT_SAME_FLOAT(1.0f, q[1]);
  EXPECT_SAME_FLOAT(1.0f, q[2]);
  EXPECT_SAME_FLOAT(kEps, same[0]);
  EXPECT_SAME_FLOAT(3.0f, same[1]);
  EXPECT_SAME_FLOAT(kEps, same[2]);

  // len 0 touches nothing; C = B overwrites the repaired denominator.
  float untouched[1] = {0.0f};
  qel_fl_division(a, untouched, c, 0);
  EXPECT_SAME_FLOAT(0.0f, untouched[0]);
  float num[2] = {1.3f, 5}, den[2] = {0, kDenormMin};
  qel_fl_division(num, den, den, 2);
  EXPECT_SAME_FLOAT(130000000.0f, den[0]);
  EXPECT_SAME_FLOAT(kInf, den[1]);
}

// ---- Power and magnitude ----

TEST(Spectra, PowerAndMagnitudeOfEachBin) {
  // Six bins: one group and a tail of two.
  std::vector<float> re = {3, 0, -5, 1e20f, kNaN, -0.0f}, im = {4, -2, 12, 0, 1, 0};
  const std::vector<float> power = {25, 4, 169, kInf, kNaN, 0};
  const std::vector<float> magnitude = {5, 2, 13, kInf, kNaN, 0};
  qel_cpx_vec A{6, re.data(), im.data()};
  Canary<float> p(6), m(6);
  qel_flt_vec P = flt_record(p), M = flt_record(m);
  P.dim = M.dim = 1;  // not read
  qel_cpx_vec_power(&A, &P);
  qel_cpx_vec_abs(&A, &M);
  expect_same_values(power.data(), p.data(), 6, "power");
  expect_same_values(magnitude.data(), m.data(), 6, "abs");
  EXPECT_TRUE(p.intact() && m.intact());
  // One qel_sqrtf per bin, in order, on the power itself.
  expect_same_values(power.data(), fake::sqrt_calls().data(), 6, "sqrt arguments");
  EXPECT_EQ(fake::sqrt_calls().size(), 6u);

  // Over the real half of the input: the same values.
  std::vector<float> r2 = re, i2 = im;
  qel_cpx_vec A2{6, r2.data(), i2.data()};
  qel_flt_vec over_re{0, r2.data()};
  qel_cpx_vec_abs(&A2, &over_re);
  expect_same_values(magnitude.data(), r2.data(), 6, "abs over re");
  std::vector<float> r3 = re, i3 = im;
  qel_cpx_vec A3{6, r3.data(), i3.data()};
  qel_flt_vec over_im{0, i3.data()};
  qel_cpx_vec_power(&A3, &over_im);
  expect_same_values(power.data(), i3.data(), 6, "power over im");

  // An empty vector calls nothing.
  fake::reset();
  qel_cpx_vec E{0, re.data(), im.data()};
  qel_cpx_vec_abs(&E, &M);
  EXPECT_TRUE(fake::sqrt_calls().empty());
}

TEST(Spectra, PowerSumAddsGroupTotalsToOneRunningSum) {
  // 4096+0i, then 0, 0, 0, then four 1+0i: the second group sums to 4 before
  // it meets 2^24, giving 16777220; one by one each 1 would be lost.
  std::vector<float> re = {4096, 0, 0, 0, 1, 1, 1, 1}, im(8, 0.0f);
  qel_cpx_vec A{8, re.data(), im.data()};
  EXPECT_SAME_FLOAT(16777220.0f, qel_cpx_vec_power_sum(&A));
  EXPECT_SAME_FLOAT(16777220.0f, qel_cpx_vec_power_sum_part(&A, 0, 8));
  // One extra 1 in the tail is added alone, and lost.
  re.push_back(1);
  im.push_back(0);
  A = {9, re.data(), im.data()};
  EXPECT_SAME_FLOAT(16777220.0f, qel_cpx_vec_power_sum(&A));
  // Within a group the four add left to right: 2^24 + 1 + 1 + 2 = 2^24 + 2.
  std::vector<float> gr = {4096, 1, 1, 0}, gi = {0, 0, 0, 1.41421354f};
  qel_cpx_vec G{4, gr.data(), gi.data()};
  const float p3 = 1.41421354f * 1.41421354f;  // 2.0000000 rounded
  EXPECT_SAME_FLOAT(((16777216.0f + 1.0f) + 1.0f) + p3, qel_cpx_vec_power_sum(&G));

  // Empty: +0.
  qel_cpx_vec E{0, re.data(), im.data()};
  EXPECT_SAME_FLOAT(0.0f, qel_cpx_vec_power_sum(&E));
  EXPECT_SAME_FLOAT(0.0f, qel_cpx_vec_power_sum_part(&A, 3, 0));
}

TEST(Spectra, PowerSumPartGroupsFromStart) {
  // start 2, num 5: elements 2-5 form a group, element 6 comes alone; the NaNs
  // outside the range must not be read.
  std::vector<float> re = {kNaN, kNaN, 1, 2, 0, 1, 3, kNaN}, im = {kNaN, kNaN, 0, 0, 1, 1, 4, kNaN};
  qel_cpx_vec A{1, re.data(), im.data()};                          // dim not read
  EXPECT_SAME_FLOAT(33.0f, qel_cpx_vec_power_sum_part(&A, 2, 5));  // 1+4+1+2 = 8, + 25

  // The 8-element example at an offset: groups count from start.
  std::vector<float> r = {5, 5, 5, 4096, 0, 0, 0, 1, 1, 1, 1}, i(11, 0.0f);
  qel_cpx_vec B{0, r.data(), i.data()};
  EXPECT_SAME_FLOAT(16777220.0f, qel_cpx_vec_power_sum_part(&B, 3, 8));
}

TEST(Spectra, InnerProductRunsInTheOutputs) {
  float re = 7, im = 7;
  std::vector<float> ar = {1, 1}, ai = {2, -1}, br = {3, 2}, bi = {4, 0};
  qel_cpx_vec A{1, ar.data(), ai.data()}, B{0, br.data(), bi.data()};
  qel_cpx_vec_inner_product(&A, &B, &re, &im);
  EXPECT_SAME_FLOAT(-5.0f, re);
  EXPECT_SAME_FLOAT(10.0f, im);
  A.dim = 2;
  qel_cpx_vec_inner_product(&A, &B, &re, &im);
  EXPECT_SAME_FLOAT(-3.0f, re);
  EXPECT_SAME_FLOAT(8.0f, im);
  A.dim = 0;
  qel_cpx_vec_inner_product(&A, &B, &re, &im);
  EXPECT_SAME_FLOAT(0.0f, re);
  EXPECT_SAME_FLOAT(0.0f, im);

  // The term is formed in full: 1 + (2^-24 - (-2^-24)) = 1 + 2^-23 exactly.
  std::vector<float> xr = {1, kTiny}, xi = {0, kTiny}, yr = {1, kTiny}, yi = {0, -kTiny};
  qel_cpx_vec X{2, xr.data(), xi.data()}, Y{2, yr.data(), yi.data()};
  qel_cpx_vec_inner_product(&X, &Y, &re, &im);
  EXPECT_SAME_FLOAT(1.0f + 0x1p-23f, re);
  EXPECT_SAME_FLOAT(0.0f, im);
}

TEST(Spectra, PowerLawCallsPowfOncePerElementInOrder) {
  fake::set_pow([](float base, float e) {
    if (base < 0.0f) return -kNaN;  // as a power function gives for -8^0.5
    if (base == 3.0f) return kInf;
    return base * e;
  });
  std::vector<float> a = {4, -8, 3, 2, 0.5f}, b = {1, 1, 1, -2, 4};
  qel_flt_vec A{5, a.data()}, B{0, b.data()};
  qel_flt_vec_powf(&A, &B, 0.5f);
  ASSERT_EQ(fake::pow_calls().size(), 5u);
  const float bases[5] = {4, -8, 3, 2, 0.5f}, exps[5] = {0.5f, 0.5f, 0.5f, -1, 2};
  for (int j = 0; j < 5; ++j) {
    EXPECT_SAME_FLOAT(bases[j], fake::pow_calls()[j].base) << j;
    EXPECT_SAME_FLOAT(exps[j], fake::pow_calls()[j].exponent) << j;
  }
  EXPECT_SAME_FLOAT(2.0f, a[0]);
  EXPECT_EQ(bits(a[1]), 0u);  // NaN stored as +0, whatever its sign
  EXPECT_SAME_FLOAT(kInf, a[2]);
  EXPECT_SAME_FLOAT(-2.0f, a[3]);
  EXPECT_SAME_FLOAT(1.0f, a[4]);

  // The platform's own answers: 4^0.5 = 2, and (-8)^0.5 is NaN, stored as +0.
  fake::reset();
  std::vector<float> c = {4, -8}, e = {1, 1};
  qel_flt_vec C{2, c.data()}, E{0, e.data()};
  qel_flt_vec_powf(&C, &E, 0.5f);
  EXPECT_SAME_FLOAT(2.0f, c[0]);
  EXPECT_EQ(bits(c[1]), 0u);

  // B = A: each element is read as base and exponent before it is written.
  fake::reset();
  std::vector<float> s = {4, 2};
  qel_flt_vec S{2, s.data()};
  qel_flt_vec_powf(&S, &S, 0.5f);
  EXPECT_SAME_FLOAT(16.0f, s[0]);  // 4^(0.5*4)
  EXPECT_SAME_FLOAT(2.0f, s[1]);   // 2^(0.5*2)
  ASSERT_EQ(fake::pow_calls().size(), 2u);
  EXPECT_SAME_FLOAT(2.0f, fake::pow_calls()[1].base);
  EXPECT_SAME_FLOAT(1.0f, fake::pow_calls()[1].exponent);
}

}  // namespace
}  // namespace qel::test

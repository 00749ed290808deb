// SPDX-License-Identifier: MIT
// Spectra: the worked products, guarded quotients, powers and sums, and the
// platform math calls they make, one row each.
#include <gtest/gtest.h>

#include <vector>

#include "support/fake_platform.h"
#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

using Floats = std::vector<float>;
using CpxFn = void (*)(const qel_cpx_vec*, const qel_cpx_vec*, qel_cpx_vec*);
using FltFn = void (*)(const qel_flt_vec*, const qel_flt_vec*, qel_flt_vec*);

// C = fn(A, B) on one element, C starting at c: C's re and im.
Floats product(CpxFn fn, float ar, float ai, float br, float bi, float cr = 0, float ci = 0) {
  qel_cpx_vec A{1, &ar, &ai}, B{1, &br, &bi}, C{1, &cr, &ci};
  fn(&A, &B, &C);
  return {cr, ci};
}

// fn over five copies of num / den: four in a group, one in the tail.
Floats quotients(FltFn fn, float num, float den) {
  Floats a(5, num), b(5, den), c(5);
  qel_flt_vec A{5, a.data()}, B{5, b.data()}, C{5, c.data()};
  fn(&A, &B, &C);
  return c;
}
void ratio_half(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C) {
  qel_flt_vec_ratio_flt(A, B, 0.5f, C);
}

// The eight-element vector 4096, 0, 0, 0, 1, 1, 1, 1 (imaginary parts 0) at
// offset `at` of a longer one.
float power_sum_part(int at) {
  Floats re(static_cast<size_t>(at), kNaN), im(static_cast<size_t>(at + 8), 0.0f);
  re.insert(re.end(), {4096, 0, 0, 0, 1, 1, 1, 1});
  qel_cpx_vec A{-1, re.data(), im.data()};  // dim is not read
  return qel_cpx_vec_power_sum_part(&A, at, 8);
}

struct Case {
  const char* why;
  Floats (*got)();
  Floats want;
};

const float k1e8 = 100000000.0f, k13 = 130000000.0f, k13t = 129999992.0f;

const Case kCases[] = {
    {"(1+2i)(3+4i)", [] { return product(qel_cpx_vec_dot_product, 1, 2, 3, 4); }, {-5, 10}},
    {"(1+2i)conj(3+4i)", [] { return product(qel_cpx_vec_dot_product_conj, 1, 2, 3, 4); }, {11, 2}},
    {"swapped operands negate im",
     [] { return product(qel_cpx_vec_dot_product_conj, 3, 4, 1, 2); },
     {11, -2}},
    {"(1+2i)conj(3+4i) added to 1+1i",
     [] { return product(qel_cpx_vec_dot_product_maddc_conj, 1, 2, 3, 4, 1, 1); },
     {12, 3}},
    {"A, B and C one vector: squared in place",
     [] {
       float re = 1, im = 2;
       qel_cpx_vec v{1, &re, &im};
       qel_cpx_vec_dot_product(&v, &v, &v);
       return Floats{re, im};
     },
     {-3, 4}},
    {"conj of 1+2i and of 0+0i",
     [] {
       float re[2] = {1, 0}, im[2] = {2, 0};
       qel_cpx_vec v{2, re, im};
       qel_cpx_vec_conj(&v, &v);
       return Floats{re[0], im[0], re[1], im[1]};
     },
     {1, -2, 0, -0.0f}},
    {"1 over 0: 1e8 in the group and in the tail",
     [] { return quotients(qel_flt_vec_dot_division, 1, 0); },
     {k1e8, k1e8, k1e8, k1e8, k1e8}},
    {"1.3 over 0: 1.3 / eps in the group, 1.3 * 1e8 in the tail",
     [] { return quotients(qel_flt_vec_dot_division, 1.3f, 0); },
     {k13, k13, k13, k13, k13t}},
    {"-0 is guarded like +0, the result positive",
     [] { return quotients(qel_flt_vec_dot_division, 1, -0.0f); },
     {k1e8, k1e8, k1e8, k1e8, k1e8}},
    {"ratio: 0.5 + -0.5 is guarded",
     [] { return quotients(ratio_half, 1.3f, -0.5f); },
     {k13, k13, k13, k13, k13t}},
    {"ratio: 0.5 + 0 divides by 0.5", [] { return quotients(ratio_half, 1, 0); }, {2, 2, 2, 2, 2}},
    {"part by part: (6+8i) / (2+0i)",
     [] { return product(qel_cpx_vec_dot_division, 6, 8, 2, 0); },
     {3, 800000000}},
    {"part by part: (6+8i) / (2+4i)",
     [] { return product(qel_cpx_vec_dot_division, 6, 8, 2, 4); },
     {3, 2}},
    {"fl_division repairs B, twice the same; A = B gives 1",
     [] {
       float a[2] = {1, 4}, b[2] = {0, 2}, c[2], d[2], same[2] = {0, 3}, e[2];
       qel_fl_division(a, b, c, 2);
       qel_fl_division(a, b, d, 2);
       qel_fl_division(same, same, e, 2);
       return Floats{c[0], c[1], b[0], b[1], d[0], d[1], e[0], e[1], same[0], same[1]};
     },
     {k1e8, 2, 1e-8f, 2, k1e8, 2, 1, 1, 1e-8f, 3}},
    {"power and magnitude of 3+4i; qel_sqrtf gets 25",
     [] {
       float re = 3, im = 4, p, m;
       qel_cpx_vec A{1, &re, &im};
       qel_flt_vec P{1, &p}, M{1, &m};
       qel_cpx_vec_power(&A, &P);
       qel_cpx_vec_abs(&A, &M);
       return Floats{p, m, fake::sqrt_calls().at(0)};
     },
     {25, 5, 25}},
    {"power sum: the second group makes 4 before it meets 4096^2",
     [] {
       float re[8] = {4096, 0, 0, 0, 1, 1, 1, 1}, im[8] = {};
       qel_cpx_vec A{8, re, im}, E{0, re, im};
       return Floats{qel_cpx_vec_power_sum(&A), qel_cpx_vec_power_sum(&E)};
     },
     {16777220, 0}},
    {"power sum part: the groups count from start",
     [] {
       return Floats{power_sum_part(0), power_sum_part(3)};
     },
     {16777220, 16777220}},
    {"power sum part: start 2, num 5 is one group and one alone",
     [] {
       float re[8] = {kNaN, kNaN, 1, 2, 0, 1, 3, kNaN}, im[8] = {kNaN, kNaN, 0, 0, 1, 1, 4, kNaN};
       qel_cpx_vec A{1, re, im};
       return Floats{qel_cpx_vec_power_sum_part(&A, 2, 5), qel_cpx_vec_power_sum_part(&A, 3, 0)};
     },
     {33, 0}},
    {"inner products of one, two and no elements",
     [] {
       float ar[2] = {1, 1}, ai[2] = {2, -1}, br[2] = {3, 2}, bi[2] = {4, 0},
             out[6] = {7, 7, 7, 7, 7, 7};
       for (int n = 0; n < 3; ++n) {
         qel_cpx_vec A{(n + 1) % 3, ar, ai}, B{0, br, bi};
         qel_cpx_vec_inner_product(&A, &B, &out[2 * n], &out[2 * n + 1]);
       }
       return Floats(out, out + 6);
     },
     {-5, 10, -3, 8, 0, 0}},
    {"powf: base and alpha * B to qel_powf, a NaN result stored as +0",
     [] {
       float a[2] = {4, -8}, b[2] = {1, 1};
       qel_flt_vec A{2, a}, B{0, b};
       qel_flt_vec_powf(&A, &B, 0.5f);
       const auto& calls = fake::pow_calls();
       return Floats{a[0], a[1], calls.at(0).base, calls.at(0).exponent, calls.at(1).base};
     },
     {2, 0, 4, 0.5f, -8}},
};

TEST(Spectra, WorkedValues) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.why);
    fake::reset();
    const Floats got = c.got();
    ASSERT_EQ(got.size(), c.want.size());
    expect_same_values(c.want.data(), got.data(), static_cast<int>(got.size()), "", true);
  }
}

}  // namespace
}  // namespace qel::test

// SPDX-License-Identifier: MIT
// Spectra against the plain references: every length 0..70 and a few large
// ones, random inputs with specials and extra zero denominators, canaries past
// every output, only the driving dim read, in-place runs where allowed.
#include <gtest/gtest.h>

#include <vector>

#include "ref/spectra_ref.h"
#include "support/fake_platform.h"
#include "support/soak.h"
#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

// A dim that a kernel must not use: were it read, the count would be wrong.
constexpr int kForeignDim = -7;

// Split complex data over canary buffers.
struct Cpx {
  Canary<float> re, im;
  Cpx(const std::vector<float>& r, const std::vector<float>& i) : re(r), im(i) {}
  qel_cpx_vec rec(int dim) { return {dim, re.data(), im.data()}; }
};

// Random values where about one in four is a signed zero: guards get hit in
// groups and tails alike.
std::vector<float> denominators(Rng& rng, int n) {
  std::vector<float> v = rng.values(n);
  for (float& x : v) {
    if (rng.below(4) == 0) x = rng.below(2) ? 0.0f : -0.0f;
  }
  return v;
}

void expect_same(Cpx& want, Cpx& got, const char* what) {
  expect_same_values(want.re, got.re, what);
  expect_same_values(want.im, got.im, what);
}

TEST(SpectraDiff, ProductsMatchReference) {
  randomized(0x5eed0301u, [&](Rng& rng) {
    for (int n : diff_lengths({127, 257, 512})) {
      SCOPED_TRACE(n);
      const std::vector<float> ar = rng.values(n), ai = rng.values(n), br = rng.values(n),
                               bi = rng.values(n), cr = rng.values(n), ci = rng.values(n);
      Cpx a(ar, ai), b(br, bi);
      qel_cpx_vec A = a.rec(kForeignDim), B = b.rec(kForeignDim);

      {  // complex and conjugate products: count C->dim; in place on A and on B
        using Fn = void (*)(const qel_cpx_vec*, const qel_cpx_vec*, qel_cpx_vec*);
        using Ref =
            void (*)(const float*, const float*, const float*, const float*, float*, float*, int);
        const struct {
          Fn fn;
          Ref ref;
          const char* what;
        } kinds[] = {{qel_cpx_vec_dot_product, ref::cpx_product, "product"},
                     {qel_cpx_vec_dot_product_conj, ref::cpx_conj_product, "conj product"}};
        for (const auto& kind : kinds) {
          Cpx want(cr, ci), got(cr, ci);
          kind.ref(ar.data(), ai.data(), br.data(), bi.data(), want.re.data(), want.im.data(), n);
          qel_cpx_vec C = got.rec(n);
          kind.fn(&A, &B, &C);
          expect_same(want, got, kind.what);
          EXPECT_EQ(C.dim, n);
          EXPECT_EQ(A.dim, kForeignDim);
          EXPECT_EQ(B.dim, kForeignDim);

          Cpx on_a(ar, ai), on_b(br, bi);
          qel_cpx_vec IA = on_a.rec(n), IB = on_b.rec(n);
          kind.fn(&IA, &B, &IA);
          kind.fn(&A, &IB, &IB);
          expect_same(want, on_a, kind.what);
          expect_same(want, on_b, kind.what);
        }
      }
      {  // accumulated conjugate product: count A->dim; C may be A or B
        Cpx want(cr, ci), got(cr, ci);
        ref::cpx_maddc_conj(ar.data(), ai.data(), br.data(), bi.data(), want.re.data(),
                            want.im.data(), n);
        qel_cpx_vec A2 = a.rec(n), C = got.rec(kForeignDim);
        qel_cpx_vec_dot_product_maddc_conj(&A2, &B, &C);
        expect_same(want, got, "maddc");
        EXPECT_EQ(C.dim, kForeignDim);

        Cpx in_a(ar, ai), in_b(br, bi), want_a(ar, ai), want_b(br, bi);
        ref::cpx_maddc_conj(ar.data(), ai.data(), br.data(), bi.data(), want_a.re.data(),
                            want_a.im.data(), n);
        ref::cpx_maddc_conj(ar.data(), ai.data(), br.data(), bi.data(), want_b.re.data(),
                            want_b.im.data(), n);
        qel_cpx_vec IA = in_a.rec(n), IB = in_b.rec(kForeignDim);
        qel_cpx_vec_dot_product_maddc_conj(&IA, &B, &IA);
        qel_cpx_vec_dot_product_maddc_conj(&A2, &IB, &IB);
        expect_same(want_a, in_a, "maddc on A");
        expect_same(want_b, in_b, "maddc on B");
      }
      {  // real weighting (count C->dim, C may be A) and real product (count A->dim)
        Canary<float> w(br);
        qel_flt_vec W{kForeignDim, w.data()};
        Cpx want(cr, ci), got(cr, ci), in_a(ar, ai);
        ref::real_product(ar.data(), br.data(), want.re.data(), n);
        ref::real_product(ai.data(), br.data(), want.im.data(), n);
        qel_cpx_vec C = got.rec(n), IA = in_a.rec(n);
        qel_cpx_vec_dot_product_flt(&A, &W, &C);
        qel_cpx_vec_dot_product_flt(&IA, &W, &IA);
        expect_same(want, got, "weighting");
        expect_same(want, in_a, "weighting in place");
        EXPECT_EQ(W.dim, kForeignDim);

        Canary<float> x(ar), y(br), want_c(n), got_c(n), in_x(ar), in_y(br);
        ref::real_product(ar.data(), br.data(), want_c.data(), n);
        qel_flt_vec X{n, x.data()}, Y{kForeignDim, y.data()}, Z{kForeignDim, got_c.data()};
        qel_flt_vec_dot_product(&X, &Y, &Z);
        expect_same_values(want_c, got_c, "real product");
        qel_flt_vec IX{n, in_x.data()}, IY{kForeignDim, in_y.data()};
        qel_flt_vec_dot_product(&IX, &Y, &IX);
        qel_flt_vec_dot_product(&X, &IY, &IY);
        expect_same_values(want_c, in_x, "real product on A");
        expect_same_values(want_c, in_y, "real product on B");
      }
      {  // conjugation: count A->dim; B may be A
        Cpx want(cr, ci), got(cr, ci), in_a(ar, ai);
        ref::cpx_conj(ar.data(), ai.data(), want.re.data(), want.im.data(), n);
        qel_cpx_vec A2 = a.rec(n), C = got.rec(kForeignDim), IA = in_a.rec(n);
        qel_cpx_vec_conj(&A2, &C);
        qel_cpx_vec_conj(&IA, &IA);
        for (int k = 0; k < n; ++k) {  // exact: NaN payloads too
          ASSERT_EQ(bits(want.re[k]), bits(got.re[k])) << k;
          ASSERT_EQ(bits(want.im[k]), bits(got.im[k])) << k;
          ASSERT_EQ(bits(want.im[k]), bits(in_a.im[k])) << k;
        }
        expect_same(want, got, "conj");
        expect_same(want, in_a, "conj in place");
      }
    }
  });
}

TEST(SpectraDiff, DivisionsMatchReference) {
  randomized(0x5eed0302u, [&](Rng& rng) {
    for (int n : diff_lengths({127, 257, 512})) {
      SCOPED_TRACE(n);
      const std::vector<float> ar = rng.values(n), ai = rng.values(n);
      const std::vector<float> br = denominators(rng, n), bi = denominators(rng, n);
      const float alpha = rng.below(2) ? rng.value() : 0.0f;
      std::vector<float> shifted = br;  // some sums alpha + b come out +0
      for (float& x : shifted) {
        if (rng.below(4) == 0) x = -alpha;
      }

      {  // ratio with offset and plain quotient: C may be A or B
        const struct {
          const std::vector<float>& den;
          bool offset;
          const char* what;
        } kinds[] = {{shifted, true, "ratio"}, {br, false, "division"}};
        for (const auto& kind : kinds) {
          Canary<float> want(n);
          if (kind.offset) {
            ref::ratio(ar.data(), kind.den.data(), alpha, want.data(), n);
          } else {
            ref::division(ar.data(), kind.den.data(), want.data(), n);
          }
          Canary<float> x(ar), y(kind.den), got(n), in_x(ar), in_y(kind.den);
          qel_flt_vec X{n, x.data()}, Y{kForeignDim, y.data()}, Z{kForeignDim, got.data()};
          qel_flt_vec IX{n, in_x.data()}, IY{kForeignDim, in_y.data()};
          const auto run = [&](qel_flt_vec* a, qel_flt_vec* b, qel_flt_vec* c) {
            if (kind.offset) {
              qel_flt_vec_ratio_flt(a, b, alpha, c);
            } else {
              qel_flt_vec_dot_division(a, b, c);
            }
          };
          run(&X, &Y, &Z);
          run(&IX, &Y, &IX);
          run(&X, &IY, &IY);
          expect_same_values(want, got, kind.what);
          expect_same_values(want, in_x, kind.what);
          expect_same_values(want, in_y, kind.what);
          EXPECT_EQ(Y.dim, kForeignDim);
          EXPECT_EQ(Z.dim, kForeignDim);
        }
      }
      {  // complex over real: C may be A
        Cpx want(ai, ar), got(ai, ar), in_a(ar, ai);
        ref::cpx_division_flt(ar.data(), ai.data(), br.data(), want.re.data(), want.im.data(), n);
        Canary<float> d(br);
        qel_flt_vec D{kForeignDim, d.data()};
        Cpx a(ar, ai);
        qel_cpx_vec A = a.rec(n), C = got.rec(kForeignDim), IA = in_a.rec(n);
        qel_cpx_vec_dot_division_flt(&A, &D, &C);
        qel_cpx_vec_dot_division_flt(&IA, &D, &IA);
        expect_same(want, got, "division_flt");
        expect_same(want, in_a, "division_flt in place");
      }
      {  // part by part: C may be A or B
        Cpx want(ai, ar), got(ai, ar), a(ar, ai), b(br, bi), in_a(ar, ai), in_b(br, bi);
        ref::cpx_division(ar.data(), ai.data(), br.data(), bi.data(), want.re.data(),
                          want.im.data(), n);
        qel_cpx_vec A = a.rec(n), B = b.rec(kForeignDim), C = got.rec(kForeignDim);
        qel_cpx_vec IA = in_a.rec(n), IB = in_b.rec(kForeignDim);
        qel_cpx_vec_dot_division(&A, &B, &C);
        qel_cpx_vec_dot_division(&IA, &B, &IA);
        qel_cpx_vec_dot_division(&A, &IB, &IB);
        expect_same(want, got, "cpx division");
        expect_same(want, in_a, "cpx division on A");
        expect_same(want, in_b, "cpx division on B");
      }
      {  // raw arrays, B repaired in place: separate, C = A, C = B, A = B
        Canary<float> want_b(br), want_c(n);
        ref::fl_division(ar.data(), want_b.data(), want_c.data(), n);
        Canary<float> b(br), c(n);
        qel_fl_division(ar.data(), b.data(), c.data(), n);
        expect_same_values(want_c, c, "fl_division C");
        expect_same_values(want_b, b, "fl_division B");

        Canary<float> ca(ar), b2(br);
        qel_fl_division(ca.data(), b2.data(), ca.data(), n);
        expect_same_values(want_c, ca, "fl_division C = A");
        Canary<float> cb(br);
        qel_fl_division(ar.data(), cb.data(), cb.data(), n);
        expect_same_values(want_c, cb, "fl_division C = B");

        Canary<float> want_ab(br), want_ab_c(n), ab(br), ab_c(n);
        ref::fl_division(want_ab.data(), want_ab.data(), want_ab_c.data(), n);
        qel_fl_division(ab.data(), ab.data(), ab_c.data(), n);
        expect_same_values(want_ab_c, ab_c, "fl_division A = B");
        expect_same_values(want_ab, ab, "fl_division A = B, B");
      }
    }
  });
}

TEST(SpectraDiff, PowersMatchReference) {
  randomized(0x5eed0303u, [&](Rng& rng) {
    for (int n : diff_lengths({127, 257, 512})) {
      SCOPED_TRACE(n);
      // Wide magnitudes so that the order of additions shows in the sums.
      const float range = rng.below(2) ? 4.0f : 3e4f;
      const std::vector<float> ar = rng.values(n, range), ai = rng.values(n, range);
      const std::vector<float> br = rng.values(n), bi = rng.values(n);
      Cpx a(ar, ai);
      qel_cpx_vec A = a.rec(n);

      {  // power and magnitude: into a separate vector, over re, over im
        Canary<float> want_p(n), want_m(n), p(n), m(n);
        ref::power(ar.data(), ai.data(), want_p.data(), n);
        fake::reset();
        ref::magnitude(ar.data(), ai.data(), want_m.data(), n);
        const std::vector<float> want_roots = fake::sqrt_calls();
        fake::reset();
        qel_flt_vec P{kForeignDim, p.data()}, M{kForeignDim, m.data()};
        qel_cpx_vec_power(&A, &P);
        qel_cpx_vec_abs(&A, &M);
        expect_same_values(want_p, p, "power");
        expect_same_values(want_m, m, "abs");
        ASSERT_EQ(fake::sqrt_calls().size(), want_roots.size());
        expect_same_values(want_roots.data(), fake::sqrt_calls().data(), n, "sqrt arguments");
        EXPECT_EQ(P.dim, kForeignDim);

        for (int half = 0; half < 2; ++half) {
          Cpx over(ar, ai);
          Canary<float>& out = half ? over.im : over.re;
          qel_cpx_vec O = over.rec(n);
          qel_flt_vec OP{kForeignDim, out.data()};
          qel_cpx_vec_power(&O, &OP);
          expect_same_values(want_p, out, "power over a half");
          Cpx over2(ar, ai);
          Canary<float>& out2 = half ? over2.im : over2.re;
          qel_cpx_vec O2 = over2.rec(n);
          qel_flt_vec OM{kForeignDim, out2.data()};
          qel_cpx_vec_abs(&O2, &OM);
          expect_same_values(want_m, out2, "abs over a half");
        }
      }
      {  // power sums: whole, and parts from every start
        EXPECT_SAME_FLOAT(ref::power_sum(ar.data(), ai.data(), n), qel_cpx_vec_power_sum(&A));
        for (int start = 0; start <= n && start < 9; ++start) {
          for (int num : {n - start, (n - start) / 2, 5}) {
            if (num > n - start || num < 0) continue;
            qel_cpx_vec F = a.rec(kForeignDim);
            EXPECT_SAME_FLOAT(ref::power_sum(ar.data() + start, ai.data() + start, num),
                              qel_cpx_vec_power_sum_part(&F, start, num))
                << "start " << start << " num " << num;
          }
        }
      }
      {  // inner product
        Cpx b(br, bi);
        qel_cpx_vec B = b.rec(kForeignDim);
        float want_re = 1.0f, want_im = 1.0f, re = 2.0f, im = 2.0f;
        ref::inner_product(ar.data(), ai.data(), br.data(), bi.data(), &want_re, &want_im, n);
        qel_cpx_vec_inner_product(&A, &B, &re, &im);
        EXPECT_SAME_FLOAT(want_re, re);
        EXPECT_SAME_FLOAT(want_im, im);
      }
      {  // power law, with the same calls in the same order; B may be A
        const float alpha = rng.uniform(-2.0f, 2.0f);
        Canary<float> want(ar), got(ar), e(br), want_self(ar), self(ar);
        fake::reset();
        ref::powf_law(want.data(), br.data(), alpha, n);
        ref::powf_law(want_self.data(), want_self.data(), alpha, n);
        const std::vector<fake::PowCall> want_calls = fake::pow_calls();
        fake::reset();
        qel_flt_vec G{n, got.data()}, E{kForeignDim, e.data()}, S{n, self.data()};
        qel_flt_vec_powf(&G, &E, alpha);
        qel_flt_vec_powf(&S, &S, alpha);
        expect_same_values(want, got, "powf");
        expect_same_values(want_self, self, "powf B = A");
        ASSERT_EQ(fake::pow_calls().size(), want_calls.size());
        for (size_t k = 0; k < want_calls.size(); ++k) {
          EXPECT_SAME_FLOAT(want_calls[k].base, fake::pow_calls()[k].base);
          EXPECT_SAME_FLOAT(want_calls[k].exponent, fake::pow_calls()[k].exponent);
        }
      }
    }
  });
}

}  // namespace
}  // namespace qel::test

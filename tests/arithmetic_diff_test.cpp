// SPDX-License-Identifier: MIT
// Scaling, addition with floors, minimum, maximum and clipping against the
// plain references: every length 0..70 and a few large ones, random inputs
// with specials, canaries past every array, in-place forms where allowed, and
// the other records' dim neither used nor changed.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "ref/arithmetic_ref.h"
#include "support/soak.h"
#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

// A record that does not drive the count carries a wrong dim: longer than A's
// for odd n, shorter for even n. Using it would write canaries or skip elements.
int other_dim(int n) { return (n % 2 != 0) ? n + 5 : n / 2; }

// Every array a function may touch, filled from one seed, and the records over
// them. A drives the count; B and C carry other_dim. Not copyable: the records
// point into the buffers.
struct World {
  World(uint32_t seed, int n)
      : ar(n), ai(n), br(n), bi(n), cr(n), ci(n), dim(n), odim(other_dim(n)) {
    Rng rng(seed);
    for (Canary<float>* b : {&ar, &ai, &br, &bi, &cr, &ci}) {
      for (int k = 0; k < n; ++k) (*b)[k] = rng.value();
    }
    s1 = rng.value();
    s2 = rng.value();
  }
  World(const World&) = delete;

  Canary<float> ar, ai, br, bi, cr, ci;
  int dim, odim;
  float s1, s2;  // scalars of the call
  qel_flt_vec A{dim, ar.data()}, B{odim, br.data()}, C{odim, cr.data()};
  qel_cpx_vec X{dim, ar.data(), ai.data()}, Y{odim, br.data(), bi.data()},
      Z{odim, cr.data(), ci.data()};
};

void expect_same_world(const World& want, const World& got) {
  const std::pair<const Canary<float>*, const Canary<float>*> arrays[] = {
      {&want.ar, &got.ar}, {&want.ai, &got.ai}, {&want.br, &got.br},
      {&want.bi, &got.bi}, {&want.cr, &got.cr}, {&want.ci, &got.ci}};
  const char* names[] = {"A.re/data", "A.im", "B.re/data", "B.im", "C.re/data", "C.im"};
  for (int k = 0; k < 6; ++k) expect_same_values(*arrays[k].first, *arrays[k].second, names[k]);
  for (const World* w : {&want, &got}) {
    EXPECT_EQ(w->A.dim, w->dim);
    EXPECT_EQ(w->X.dim, w->dim);
    for (int d : {w->B.dim, w->C.dim, w->Y.dim, w->Z.dim}) EXPECT_EQ(d, w->odim);
  }
}

// Every test here runs randomized from this seed. A round's Rng gives the
// offset that moves every world's seed: 0 for Rng(kBase) itself, so the normal
// run keeps the seeds salt * 1000003 + n, and a soak round gets fresh worlds.
constexpr uint32_t kBase = 0x5eed0201u;
uint32_t seed_offset(Rng& rng) {
  Rng base(kBase);
  return rng.word() ^ base.word();
}

// Runs call(world, use_reference) on two identical worlds, one through the
// reference and one through the library, for every length, and compares.
template <typename Call>
void check(uint32_t offset, const char* what, uint32_t salt, Call call) {
  SCOPED_TRACE(what);
  for (int n : diff_lengths()) {
    SCOPED_TRACE(n);
    const uint32_t seed = (salt * 1000003u + static_cast<uint32_t>(n)) ^ offset;
    World want(seed, n), got(seed, n);
    call(want, true);
    call(got, false);
    expect_same_world(want, got);
  }
}

TEST(ArithmeticDiff, ScalingMatchesReference) {
  randomized(kBase, [&](Rng& rng) {
    const uint32_t o = seed_offset(rng);
    check(o, "fl_mul_scale", 1, [](World& w, bool r) {
      (r ? ref::fl_mul_scale : qel_fl_mul_scale)(w.cr.data(), w.ar.data(), w.s1, w.dim);
    });
    check(o, "fl_mul_scale in place", 2, [](World& w, bool r) {
      (r ? ref::fl_mul_scale : qel_fl_mul_scale)(w.ar.data(), w.ar.data(), w.s1, w.dim);
    });
    check(o, "cpx_vec_scale", 3,
          [](World& w, bool r) { (r ? ref::cpx_vec_scale : qel_cpx_vec_scale)(&w.X, w.s1); });
    check(o, "cpx_vec_scale2", 4, [](World& w, bool r) {
      (r ? ref::cpx_vec_scale2 : qel_cpx_vec_scale2)(&w.X, w.s1, &w.Y);
    });
    check(o, "cpx_vec_scale2 B=A", 5, [](World& w, bool r) {
      (r ? ref::cpx_vec_scale2 : qel_cpx_vec_scale2)(&w.X, w.s1, &w.X);
    });
    check(o, "flt_vec_scale", 6,
          [](World& w, bool r) { (r ? ref::flt_vec_scale : qel_flt_vec_scale)(&w.A, w.s1); });
    check(o, "flt_vec_scale2", 7, [](World& w, bool r) {
      (r ? ref::flt_vec_scale2 : qel_flt_vec_scale2)(&w.A, w.s1, &w.B);
    });
    check(o, "flt_vec_scale2 B=A", 8, [](World& w, bool r) {
      (r ? ref::flt_vec_scale2 : qel_flt_vec_scale2)(&w.A, w.s1, &w.A);
    });
    check(o, "flt_vec_pairwise_scale", 9, [](World& w, bool r) {
      (r ? ref::flt_vec_pairwise_scale : qel_flt_vec_pairwise_scale)(&w.A, &w.B);
    });
    check(o, "fl_mul_step", 10, [](World& w, bool r) {
      (r ? ref::fl_mul_step : qel_fl_mul_step)(w.cr.data(), w.ar.data(), w.s1, w.s2, w.dim);
    });
    check(o, "fl_mul_step in place", 11, [](World& w, bool r) {
      (r ? ref::fl_mul_step : qel_fl_mul_step)(w.ar.data(), w.ar.data(), w.s1, w.s2, w.dim);
    });
  });
}

TEST(ArithmeticDiff, AffineUpdatesMatchReference) {
  randomized(kBase, [&](Rng& rng) {
    const uint32_t o = seed_offset(rng);
    for (bool self : {false, true}) {
      SCOPED_TRACE(self ? "B = A" : "B separate");
      const uint32_t s = self ? 100 : 0;
      check(o, "cpx_vec_pairwise_bias", 20 + s, [self](World& w, bool r) {
        (r ? ref::cpx_vec_pairwise_bias : qel_cpx_vec_pairwise_bias)(&w.X, self ? &w.X : &w.Y,
                                                                     w.s1);
      });
      check(o, "flt_vec_pairwise_bias", 21 + s, [self](World& w, bool r) {
        (r ? ref::flt_vec_pairwise_bias : qel_flt_vec_pairwise_bias)(&w.A, self ? &w.A : &w.B,
                                                                     w.s1);
      });
      check(o, "cpx_vec_scale_add", 22 + s, [self](World& w, bool r) {
        (r ? ref::cpx_vec_scale_add : qel_cpx_vec_scale_add)(&w.X, w.s1, self ? &w.X : &w.Y);
      });
      check(o, "flt_vec_scale_add", 23 + s, [self](World& w, bool r) {
        (r ? ref::flt_vec_scale_add : qel_flt_vec_scale_add)(&w.A, w.s1, self ? &w.A : &w.B);
      });
    }
  });
}

TEST(ArithmeticDiff, SumsAndDifferencesMatchReference) {
  randomized(kBase, [&](Rng& rng) {
    const uint32_t o = seed_offset(rng);
    // Output separate, output = first input, output = second input.
    for (int out = 0; out < 3; ++out) {
      SCOPED_TRACE(out);
      const uint32_t s = static_cast<uint32_t>(out) * 100;
      auto real_out = [out](World& w) { return out == 0 ? &w.C : out == 1 ? &w.A : &w.B; };
      auto cpx_out = [out](World& w) { return out == 0 ? &w.Z : out == 1 ? &w.X : &w.Y; };
      check(o, "fl_add", 30 + s, [&](World& w, bool r) {
        (r ? ref::fl_add : qel_fl_add)(w.ar.data(), w.br.data(), real_out(w)->data, w.dim);
      });
      check(o, "flt_vec_add", 31 + s, [&](World& w, bool r) {
        (r ? ref::flt_vec_add : qel_flt_vec_add)(&w.A, &w.B, real_out(w));
      });
      check(o, "cpx_vec_add", 32 + s, [&](World& w, bool r) {
        (r ? ref::cpx_vec_add : qel_cpx_vec_add)(&w.X, &w.Y, cpx_out(w));
      });
      check(o, "cpx_vec_subtract", 33 + s, [&](World& w, bool r) {
        (r ? ref::cpx_vec_subtract : qel_cpx_vec_subtract)(&w.X, &w.Y, cpx_out(w));
      });
      check(o, "flt_vec_subtract", 34 + s, [&](World& w, bool r) {
        (r ? ref::flt_vec_subtract : qel_flt_vec_subtract)(&w.A, &w.B, real_out(w));
      });
      check(o, "fl_add_max", 35 + s, [&](World& w, bool r) {
        (r ? ref::fl_add_max : qel_fl_add_max)(w.ar.data(), w.br.data(), real_out(w)->data, w.s1,
                                               w.dim);
      });
      check(o, "flt_vec_add_max", 36 + s, [&](World& w, bool r) {
        (r ? ref::flt_vec_add_max : qel_flt_vec_add_max)(&w.A, &w.B, real_out(w), w.s1);
      });
    }
    check(o, "flt_vec_add_flt", 37,
          [](World& w, bool r) { (r ? ref::flt_vec_add_flt : qel_flt_vec_add_flt)(&w.A, w.s1); });
  });
}

TEST(ArithmeticDiff, FloorsAndCeilingMatchReference) {
  randomized(kBase, [&](Rng& rng) {
    const uint32_t o = seed_offset(rng);
    check(o, "fl_max", 40, [](World& w, bool r) {
      (r ? ref::fl_max : qel_fl_max)(w.ar.data(), w.br.data(), w.s1, w.dim);
    });
    check(o, "flt_vec_subtract_max", 41, [](World& w, bool r) {
      (r ? ref::flt_vec_subtract_max : qel_flt_vec_subtract_max)(&w.A, w.s1, &w.B, w.s2);
    });
    check(o, "flt_vec_subtract_min", 42, [](World& w, bool r) {
      (r ? ref::flt_vec_subtract_min : qel_flt_vec_subtract_min)(&w.A, &w.B, w.s1, &w.C);
    });
    check(o, "flt_vec_subtract_min C=A", 43, [](World& w, bool r) {
      (r ? ref::flt_vec_subtract_min : qel_flt_vec_subtract_min)(&w.A, &w.B, w.s1, &w.A);
    });
    check(o, "flt_vec_subtract_min B shares C's data", 44, [](World& w, bool r) {
      const qel_flt_vec ceiling = {w.B.dim, w.C.data};
      (r ? ref::flt_vec_subtract_min : qel_flt_vec_subtract_min)(&w.A, &ceiling, w.s1, &w.C);
    });
  });
}

TEST(ArithmeticDiff, SelectionsAndClippingMatchReference) {
  randomized(kBase, [&](Rng& rng) {
    const uint32_t o = seed_offset(rng);
    for (int out = 0; out < 3; ++out) {
      SCOPED_TRACE(out);
      const uint32_t s = static_cast<uint32_t>(out) * 100;
      auto real_out = [out](World& w) { return out == 0 ? &w.C : out == 1 ? &w.A : &w.B; };
      auto cpx_out = [out](World& w) { return out == 0 ? &w.Z : out == 1 ? &w.X : &w.Y; };
      check(o, "cpx_vec_min", 50 + s, [&](World& w, bool r) {
        (r ? ref::cpx_vec_min : qel_cpx_vec_min)(&w.X, &w.Y, cpx_out(w));
      });
      check(o, "cpx_vec_max", 51 + s, [&](World& w, bool r) {
        (r ? ref::cpx_vec_max : qel_cpx_vec_max)(&w.X, &w.Y, cpx_out(w));
      });
      check(o, "flt_vec_min", 52 + s, [&](World& w, bool r) {
        (r ? ref::flt_vec_min : qel_flt_vec_min)(&w.A, &w.B, real_out(w));
      });
      check(o, "flt_vec_max", 53 + s, [&](World& w, bool r) {
        (r ? ref::flt_vec_max : qel_flt_vec_max)(&w.A, &w.B, real_out(w));
      });
    }
    for (bool self : {false, true}) {
      check(o, "flt_vec_max_value", self ? 54 : 55, [self](World& w, bool r) {
        (r ? ref::flt_vec_max_value : qel_flt_vec_max_value)(&w.A, w.s1, self ? &w.A : &w.B);
      });
    }
    check(o, "cpx_vec_max_value", 56, [](World& w, bool r) {
      (r ? ref::cpx_vec_max_value : qel_cpx_vec_max_value)(&w.X, w.s1);
    });
    check(o, "flt_vec_smooth", 57, [](World& w, bool r) {
      (r ? ref::flt_vec_smooth : qel_flt_vec_smooth)(&w.A, &w.B, w.s1);
    });
  });
}

}  // namespace
}  // namespace qel::test

// SPDX-License-Identifier: MIT
// Every kernel but the filters against its plain reference, through one
// driver and one table: each row runs on two identical worlds of random arrays
// (specials sprinkled in, canaries past every array) for every length 0..70 and
// a few large ones, in each aliasing form the function allows, with every
// record's dim but the driving one wrong.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "ref/arithmetic_ref.h"
#include "ref/containers_ref.h"
#include "ref/framebuf_ref.h"
#include "ref/pcm_ref.h"
#include "ref/reductions_ref.h"
#include "ref/spectra_ref.h"
#include "support/fake_platform.h"
#include "support/soak.h"
#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

// Where the arrays of C and Z lie: their own, A's (C = A) or B's (C = B).
enum Form : unsigned { kApart = 1, kOnA = 2, kOnB = 4, kAll = 7 };
enum class Drive { kA, kC, kNone };  // which records carry the true count

struct World {
  World(uint32_t seed, int count, Drive drive, Form form);
  World(const World&) = delete;
  int n, k;                  // the count, and an index in 0..n
  float s1, s2, ret = 0.0f;  // scalars of the call, and its result
  Canary<float> ar, ai, br, bi, cr, ci;
  Canary<int16_t> sa;
  Canary<int32_t> ia;
  qel_flt_vec A, B, C;
  qel_cpx_vec X, Y, Z;
};

World::World(uint32_t seed, int count, Drive drive, Form form)
    : n(count), ar(n), ai(n), br(n), bi(n), cr(n), ci(n), sa(n), ia(n) {
  Rng rng(seed);
  // Lengths cycle through ranges (around full scale for PCM, wide for sums)
  // and, one in three, inputs without specials, whose sums stay finite.
  constexpr float kRanges[] = {1.5f, 4.0f, 3e4f, 1e6f};
  const float range = kRanges[n % 4];
  const int one_in = (n % 3 == 0) ? 0 : 8;
  k = rng.below(n + 1);
  s1 = rng.value(range, one_in);
  s2 = rng.value(range, one_in);
  for (Canary<float>* a : {&ar, &ai, &br, &bi, &cr, &ci}) {
    for (int i = 0; i < n; ++i) (*a)[i] = rng.value(range, one_in);
  }
  for (int i = 0; i < n; ++i) {
    // Zero denominators, and sums s1 + b that come out zero.
    if (rng.below(5) == 0) br[i] = rng.below(2) ? 0.0f : -0.0f;
    if (rng.below(5) == 0) bi[i] = rng.below(2) ? 0.0f : -0.0f;
    if (rng.below(8) == 0) br[i] = -s1;
    sa[i] = rng.sample();
    ia[i] = static_cast<int32_t>(rng.word()) >> (rng.below(2) ? 8 : 6);  // some beyond 24 bits
  }
  // Longer than n for odd n, shorter for even n: using it writes canaries or
  // skips elements.
  const int other = (n % 2 != 0) ? n + 5 : n / 2;
  const int dim_a = (drive == Drive::kA) ? n : other, dim_c = (drive == Drive::kC) ? n : other;
  float* zr = (form == kOnA) ? ar.data() : (form == kOnB) ? br.data() : cr.data();
  float* zi = (form == kOnA) ? ai.data() : (form == kOnB) ? bi.data() : ci.data();
  A = {dim_a, ar.data()};
  B = {other, br.data()};
  C = {dim_c, zr};
  X = {dim_a, ar.data(), ai.data()};
  Y = {other, br.data(), bi.data()};
  Z = {dim_c, zr, zi};
}

bool same_world(const World& want, const World& got, bool exact) {
  const char* names[] = {"A.re", "A.im", "B.re", "B.im", "C.re", "C.im"};
  const Canary<float>* w[] = {&want.ar, &want.ai, &want.br, &want.bi, &want.cr, &want.ci};
  const Canary<float>* g[] = {&got.ar, &got.ai, &got.br, &got.bi, &got.cr, &got.ci};
  bool same = true;
  for (int i = 0; i < 6; ++i) same = expect_same(*w[i], *g[i], names[i], exact) && same;
  same = expect_same(want.sa, got.sa, "int16") && expect_same(want.ia, got.ia, "int32") && same;
  for (auto f : {&World::s1, &World::s2, &World::ret}) {
    EXPECT_SAME_FLOAT(want.*f, got.*f);
    same = same && same_value(want.*f, got.*f);
  }
  for (auto r : {&World::A, &World::B, &World::C}) EXPECT_EQ((want.*r).dim, (got.*r).dim);
  for (auto r : {&World::X, &World::Y, &World::Z}) EXPECT_EQ((want.*r).dim, (got.*r).dim);
  return same;
}

struct Row {
  const char* name;
  void (*call)(World& w, bool reference);
  unsigned forms = kApart;
  Drive drive = Drive::kA;
  bool exact = false;  // copies of operands: NaN payloads must match too
};

// A row calling the reference or the library's function of the same name,
// and one that keeps its result.
#define ROW(f, ...) #f, [](World & w, bool r) { (r ? ref::f : qel_##f)(__VA_ARGS__); }
#define RET(f, ...) #f, [](World & w, bool r) { w.ret = (r ? ref::f : qel_##f)(__VA_ARGS__); }
#define BOTH(f) (r ? ref::f : qel_##f)

// Rows that need more than one call or records of their own.
void copy_sharing_re(World& w, bool r) {
  qel_cpx_vec z{w.n, w.ar.data(), w.ci.data()};
  BOTH(cpx_vec_copy)(&w.X, &z);
}
// A range copy reads no dim: start k/2, end k-1 give empty, one-element
// (nothing copied) and longer ranges.
void copy_ranges(World& w, bool r) {
  qel_flt_vec a{w.n, w.ar.data()}, c{w.n, w.C.data};
  qel_cpx_vec x{w.n, w.ar.data(), w.ai.data()}, z{w.n, w.Z.re, w.Z.im};
  BOTH(flt_vec_copy_subvec)(&a, w.k / 2, w.k - 1, &c);
  BOTH(cpx_vec_copy_subvec)(&x, w.k / 2 + 1, w.k - 1, &z);
}
void measures_over_im(World& w, bool r) {
  qel_flt_vec over_im{w.B.dim, w.ai.data()};
  BOTH(cpx_vec_power)(&w.X, &over_im);
  BOTH(cpx_vec_abs)(&w.X, &over_im);
}
// Outputs that share storage as far as allowed: weights that are the
// output's im, and both sums of an inner product in one float.
void shared_outputs(World& w, bool r) {
  qel_flt_vec gain{w.n, w.ai.data()};
  qel_cpx_vec x{w.n, w.ar.data(), w.ai.data()};
  BOTH(cpx_vec_dot_product_flt)(&x, &gain, &x);
  BOTH(cpx_vec_inner_product)(&w.X, &w.Y, &w.s1, &w.s1);
}
// Conversions in place, as far as each allows: 16-bit samples in the upper
// half of the float output, outputs over their own inputs.
void pcm_in_place(World& w, bool r) {
  auto* upper = reinterpret_cast<int16_t*>(w.ar.data()) + w.n;
  std::memcpy(upper, w.sa.data(), sizeof(int16_t) * static_cast<size_t>(w.n));
  BOTH(vec_normalize)(upper, w.ar.data(), w.n);
  BOTH(vec_denormalize)(w.ai.data(), reinterpret_cast<int16_t*>(w.ai.data()), w.n);
  BOTH(vec_denormalize24)(w.br.data(), reinterpret_cast<int32_t*>(w.br.data()), w.n);
  BOTH(vec_normalize24)(reinterpret_cast<int32_t*>(w.bi.data()), w.bi.data(), w.n);
}
// A delay line longer than the input, then one shorter, which wraps.
void delay_lines(World& w, bool r) {
  if (w.n == 0) return;
  const int len = 1 + w.k % w.n;
  BOTH(fl_circular)(w.C.data, w.ci.data(), w.A.data, w.B.data, w.n, w.k % w.n, w.k);
  BOTH(fl_circular)(w.C.data, w.ci.data(), w.A.data, w.B.data, len, w.n % len, w.n);
}
// The window is read backwards from the weight of element 0.
void windowed(World& w, bool r) {
  BOTH(fl_maa)(w.C.data, w.A.data, w.br.data() + (w.n > 0 ? w.n - 1 : 0), w.n);
}

const Row kRows[] = {
    // Fills, copies
    {ROW(cpx_vec_set, &w.X, w.s1, w.s2), kApart, Drive::kA, true},
    {ROW(flt_vec_set, &w.A, w.s1), kApart, Drive::kA, true},
    {ROW(short_vec_set, w.sa.data(), static_cast<int16_t>(w.k - 9), w.k - 2), kApart, Drive::kNone},
    {ROW(flt_vec_copy, &w.A, &w.C), kApart | kOnA, Drive::kC, true},
    {ROW(cpx_vec_copy, &w.X, &w.Z), kApart | kOnA, Drive::kC, true},
    {"cpx_vec_copy sharing re", copy_sharing_re, kApart, Drive::kNone, true},
    {"copy_subvec", copy_ranges, kApart | kOnA, Drive::kNone, true},
    // Scaling and affine updates
    {ROW(fl_mul_scale, w.C.data, w.A.data, w.s1, w.n), kApart | kOnA},
    {ROW(cpx_vec_scale, &w.X, w.s1)},
    {ROW(cpx_vec_scale2, &w.X, w.s1, &w.Z), kApart | kOnA},
    {ROW(flt_vec_scale, &w.A, w.s1)},
    {ROW(flt_vec_scale2, &w.A, w.s1, &w.C), kApart | kOnA},
    {ROW(flt_vec_pairwise_scale, &w.A, &w.C), kApart | kOnA},
    {ROW(cpx_vec_pairwise_bias, &w.X, &w.Z, w.s1), kApart | kOnA},
    {ROW(flt_vec_pairwise_bias, &w.A, &w.C, w.s1), kApart | kOnA},
    {ROW(cpx_vec_scale_add, &w.X, w.s1, &w.Z), kApart | kOnA},
    {ROW(flt_vec_scale_add, &w.A, w.s1, &w.C), kApart | kOnA},
    {ROW(fl_mul_step, w.C.data, w.A.data, w.s1, w.s2, w.n), kApart | kOnA},
    // Addition and subtraction with floors
    {ROW(fl_add, w.A.data, w.B.data, w.C.data, w.n), kAll, Drive::kNone},
    {ROW(flt_vec_add, &w.A, &w.B, &w.C), kAll},
    {ROW(cpx_vec_add, &w.X, &w.Y, &w.Z), kAll},
    {ROW(flt_vec_add_flt, &w.A, w.s1)},
    {ROW(cpx_vec_subtract, &w.X, &w.Y, &w.Z), kAll},
    {ROW(flt_vec_subtract, &w.A, &w.B, &w.C), kAll},
    {ROW(fl_add_max, w.A.data, w.B.data, w.C.data, w.s1, w.n), kAll},
    {ROW(flt_vec_add_max, &w.A, &w.B, &w.C, w.s1), kAll},
    {ROW(fl_max, w.A.data, w.C.data, w.s1, w.n), kApart | kOnA, Drive::kNone, true},
    {ROW(flt_vec_subtract_max, &w.A, w.s1, &w.C, w.s2), kApart | kOnA},
    {ROW(flt_vec_subtract_min, &w.A, &w.B, w.s1, &w.C), kApart | kOnA},
    {ROW(flt_vec_subtract_min, &w.A, &w.C, w.s1, &w.B), kOnB},  // the ceiling is the output
    // Minimum, maximum and clipping
    {ROW(cpx_vec_min, &w.X, &w.Y, &w.Z), kAll, Drive::kA, true},
    {ROW(cpx_vec_max, &w.X, &w.Y, &w.Z), kAll, Drive::kA, true},
    {ROW(flt_vec_min, &w.A, &w.B, &w.C), kAll, Drive::kA, true},
    {ROW(flt_vec_max, &w.A, &w.B, &w.C), kAll, Drive::kA, true},
    {ROW(flt_vec_max_value, &w.A, w.s1, &w.C), kApart | kOnA, Drive::kA, true},
    {ROW(cpx_vec_max_value, &w.X, w.s1), kApart, Drive::kA, true},
    {ROW(flt_vec_smooth, &w.A, &w.C, w.s1), kApart | kOnA},
    // Products
    {ROW(cpx_vec_dot_product, &w.X, &w.Y, &w.Z), kAll, Drive::kC},
    {ROW(cpx_vec_dot_product_conj, &w.X, &w.Y, &w.Z), kAll, Drive::kC},
    {ROW(cpx_vec_dot_product_maddc_conj, &w.X, &w.Y, &w.Z), kAll},
    {ROW(cpx_vec_dot_product_flt, &w.X, &w.B, &w.Z), kApart | kOnA, Drive::kC},
    {ROW(flt_vec_dot_product, &w.A, &w.B, &w.C), kAll},
    {ROW(cpx_vec_conj, &w.X, &w.Z), kApart | kOnA, Drive::kA, true},
    // Division
    {ROW(flt_vec_ratio_flt, &w.A, &w.B, w.s1, &w.C), kAll},
    {ROW(flt_vec_dot_division, &w.A, &w.B, &w.C), kAll},
    {ROW(cpx_vec_dot_division_flt, &w.X, &w.B, &w.Z), kApart | kOnA},
    {ROW(cpx_vec_dot_division, &w.X, &w.Y, &w.Z), kAll},
    {ROW(fl_division, w.A.data, w.B.data, w.C.data, w.n), kAll, Drive::kNone},
    {ROW(fl_division, w.C.data, w.B.data, w.A.data, w.n), kOnB, Drive::kNone},  // A = B
    // Magnitude and power
    {ROW(cpx_vec_power, &w.X, &w.C), kApart | kOnA},
    {ROW(cpx_vec_abs, &w.X, &w.C), kApart | kOnA},
    {"cpx_vec_power, cpx_vec_abs over im", measures_over_im},
    {RET(cpx_vec_power_sum, &w.X)},
    {RET(cpx_vec_power_sum_part, &w.Y, w.k, w.n - w.k)},
    {ROW(cpx_vec_inner_product, &w.X, &w.Y, &w.s1, &w.s2)},
    {"cpx_vec_dot_product_flt, cpx_vec_inner_product sharing outputs", shared_outputs},
    {ROW(flt_vec_powf, &w.A, &w.C, w.s1), kApart | kOnA},
    // Sums, variance and peak
    {RET(fl_sum, w.ar.data(), w.k, w.n - w.k), kApart, Drive::kNone},
    {RET(flt_vec_sum, &w.A)},
    {RET(flt_vec_sum_part, &w.B, w.k, w.n - w.k)},
    {RET(flt_vec_var, &w.A)},
    {RET(fl_abs_max, w.A.data, w.n), kApart, Drive::kNone},
    // PCM conversion
    {ROW(vec_normalize, w.sa.data(), w.ar.data(), w.n)},
    {ROW(vec_denormalize, w.ar.data(), w.sa.data(), w.n)},
    {ROW(vec_normalize24, w.ia.data(), w.ar.data(), w.n)},
    {ROW(vec_denormalize24, w.ar.data(), w.ia.data(), w.n)},
    {"PCM conversions in place", pcm_in_place, kApart, Drive::kNone, true},
    // Delay line and windowed accumulation
    {"fl_circular", delay_lines, kAll},
    {"fl_maa", windowed, kApart | kOnA},
};

// Runs a row through both worlds for every form and length; returns at the
// first difference, so that a fault gives a short report.
void check(const Row& row, uint32_t offset) {
  SCOPED_TRACE(row.name);
  uint32_t salt = 2166136261u;  // FNV-1a of the name: each row its own inputs
  for (const char* c = row.name; *c != '\0'; ++c) {
    salt = (salt ^ static_cast<uint8_t>(*c)) * 16777619u;
  }
  for (Form form : {kApart, kOnA, kOnB}) {
    if ((row.forms & form) == 0) continue;
    for (int n : diff_lengths()) {
      SCOPED_TRACE(testing::Message() << "form " << form << ", n " << n);
      const uint32_t seed = (salt + static_cast<uint32_t>(n) * 1000003u) ^ offset;
      World want(seed, n, row.drive, form), got(seed, n, row.drive, form);
      fake::reset();
      row.call(want, true);
      const std::vector<float> roots = fake::sqrt_calls();
      const std::vector<fake::PowCall> powers = fake::pow_calls();
      fake::reset();
      row.call(got, false);
      ASSERT_EQ(roots.size(), fake::sqrt_calls().size());
      ASSERT_EQ(powers.size(), fake::pow_calls().size());
      bool same = expect_same_values(roots.data(), fake::sqrt_calls().data(),
                                     static_cast<int>(roots.size()), "qel_sqrtf argument");
      for (size_t i = 0; i < powers.size(); ++i) {
        EXPECT_SAME_FLOAT(powers[i].base, fake::pow_calls()[i].base);
        EXPECT_SAME_FLOAT(powers[i].exponent, fake::pow_calls()[i].exponent);
        same = same && same_value(powers[i].exponent, fake::pow_calls()[i].exponent);
      }
      if (!same_world(want, got, row.exact) || !same) return;
    }
  }
}

TEST(Diff, EveryKernelMatchesItsReference) {
  randomized(0x5eed0201u, [](Rng& rng) {
    const uint32_t offset = rng.word() ^ Rng(0x5eed0201u).word();  // 0 unless soaking
    for (const Row& row : kRows) check(row, offset);
  });
}

}  // namespace
}  // namespace qel::test

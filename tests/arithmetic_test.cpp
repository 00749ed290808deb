// SPDX-License-Identifier: MIT
// Scaling, floors, minimum, maximum and clipping: the worked values, ties and
// NaN winners, one row each, every element of a group and of the remainder.
#include <gtest/gtest.h>

#include <vector>

#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

const float kNaN1 = from_bits(0x7fc00001u), kNaN2 = from_bits(0xffc00002u);  // two payloads

// Nine elements: a group of eight and one in the remainder. The output C starts
// as a copy of A, so that the in-place functions work on C.
struct Arrays {
  float a[9], ai[9], b[9], bi[9], c[9], ci[9];
  qel_flt_vec A{9, a}, B{9, b}, C{9, c};
  qel_cpx_vec X{9, a, ai}, Y{9, b, bi}, Z{9, c, ci};
};

struct Case {
  const char* why;
  void (*call)(Arrays& v, float s);
  float a, ai, b, bi, s, want, want_im;
};
#define CALL(...) [](Arrays& v, [[maybe_unused]] float s) { __VA_ARGS__; }

const Case kCases[] = {
    {"scale_add with B = A stores a * s first", CALL(qel_flt_vec_scale_add(&v.C, s, &v.C)), 3, 0, 0,
     0, 0.5f, 3, 0},
    {"complex scale_add with B = A gives a * s + a", CALL(qel_cpx_vec_scale_add(&v.Z, s, &v.Z)), 3,
     3, 0, 0, 0.5f, 4.5f, 4.5f},
    {"add_max: a sum equal to the floor stays", CALL(qel_fl_add_max(v.a, v.b, v.c, s, 9)), 1, 0, 1,
     0, 2, 2, 0},
    {"add_max: -0 stays under a +0 floor", CALL(qel_fl_add_max(v.a, v.b, v.c, s, 9)), -0.0f, 0,
     -0.0f, 0, 0, -0.0f, 0},
    {"add_max: a NaN sum stays", CALL(qel_fl_add_max(v.a, v.b, v.c, s, 9)), kInf, 0, -kInf, 0, 1,
     kNaN, 0},
    {"add_max: a NaN floor keeps the sum", CALL(qel_fl_add_max(v.a, v.b, v.c, s, 9)), -5, 0, 1, 0,
     kNaN, -4, 0},
    {"fl_max: below the floor is raised", CALL(qel_fl_max(v.a, v.c, s, 9)), -5, 0, 0, 0, -1, -1, 0},
    {"fl_max: -0 stays over a +0 floor", CALL(qel_fl_max(v.a, v.c, s, 9)), -0.0f, 0, 0, 0, 0, -0.0f,
     0},
    {"fl_max: a NaN value stays, payload and all", CALL(qel_fl_max(v.a, v.c, s, 9)), kNaN1, 0, 0, 0,
     1, kNaN1, 0},
    {"fl_max: a NaN floor keeps the value", CALL(qel_fl_max(v.a, v.c, s, 9)), kNaN1, 0, 0, 0, kNaN2,
     kNaN1, 0},
    {"subtract_max: b = 0 is fl_max", CALL(qel_flt_vec_subtract_max(&v.A, 0.0f, &v.C, s)), -0.0f, 0,
     0, 0, 0, -0.0f, 0},
    {"subtract_min: a difference equal to the ceiling stays",
     CALL(qel_flt_vec_subtract_min(&v.A, &v.B, s, &v.C)), 1, 0, 4, 0, 5, 4, 0},
    {"subtract_min: +0 is not above a -0 ceiling",
     CALL(qel_flt_vec_subtract_min(&v.A, &v.B, s, &v.C)), 0, 0, -0.0f, 0, 0, 0, 0},
    {"subtract_min: a NaN ceiling keeps the difference",
     CALL(qel_flt_vec_subtract_min(&v.A, &v.B, s, &v.C)), 1, 0, kNaN, 0, 5, 4, 0},
    {"cpx min: equal powers 25, B wins", CALL(qel_cpx_vec_min(&v.X, &v.Y, &v.Z)), 3, 4, 5, 0, 0, 5,
     0},
    {"cpx max: equal powers 25, B wins", CALL(qel_cpx_vec_max(&v.X, &v.Y, &v.Z)), 3, 4, 5, 0, 0, 5,
     0},
    {"cpx min: power 1 against 4", CALL(qel_cpx_vec_min(&v.X, &v.Y, &v.Z)), 1, 0, 0, 2, 0, 1, 0},
    {"cpx max: power 1 against 4", CALL(qel_cpx_vec_max(&v.X, &v.Y, &v.Z)), 1, 0, 0, 2, 0, 0, 2},
    {"cpx min: NaN powers, B's element", CALL(qel_cpx_vec_min(&v.X, &v.Y, &v.Z)), kNaN1, 0, kNaN2,
     1, 0, kNaN2, 1},
    {"cpx max: NaN power in A, B's element", CALL(qel_cpx_vec_max(&v.X, &v.Y, &v.Z)), kNaN1, 0, 1,
     -0.0f, 0, 1, -0.0f},
    {"min: NaN in A, B", CALL(qel_flt_vec_min(&v.A, &v.B, &v.C)), kNaN1, 0, 1, 0, 0, 1, 0},
    {"min: NaN in B, B", CALL(qel_flt_vec_min(&v.A, &v.B, &v.C)), 1, 0, kNaN2, 0, 0, kNaN2, 0},
    {"min: two NaNs, B's", CALL(qel_flt_vec_min(&v.A, &v.B, &v.C)), kNaN1, 0, kNaN2, 0, 0, kNaN2,
     0},
    {"max: two NaNs, B's", CALL(qel_flt_vec_max(&v.A, &v.B, &v.C)), kNaN1, 0, kNaN2, 0, 0, kNaN2,
     0},
    {"max: +0 and -0 tie, B", CALL(qel_flt_vec_max(&v.A, &v.B, &v.C)), 0, 0, -0.0f, 0, 0, -0.0f, 0},
    {"min: -0 and +0 tie, B", CALL(qel_flt_vec_min(&v.A, &v.B, &v.C)), -0.0f, 0, 0, 0, 0, 0, 0},
    {"max_value: negative becomes the threshold", CALL(qel_flt_vec_max_value(&v.A, s, &v.C)), -3, 0,
     0, 0, 0, 0, 0},
    {"max_value: -0 under +0 becomes +0", CALL(qel_flt_vec_max_value(&v.A, s, &v.C)), -0.0f, 0, 0,
     0, 0, 0, 0},
    {"max_value: a NaN element gives the threshold", CALL(qel_flt_vec_max_value(&v.A, s, &v.C)),
     kNaN1, 0, 0, 0, 1, 1, 0},
    {"max_value: a NaN threshold is stored", CALL(qel_flt_vec_max_value(&v.A, s, &v.C)), kNaN1, 0,
     0, 0, kNaN2, kNaN2, 0},
    {"cpx max_value: power 0.5 below 1 is raised, im +0", CALL(qel_cpx_vec_max_value(&v.Z, s)),
     0.5f, -0.5f, 0, 0, 1, 1, 0},
    {"cpx max_value: power equal to the bound squared stays", CALL(qel_cpx_vec_max_value(&v.Z, s)),
     0, -1, 0, 0, 1, 0, -1},
    {"cpx max_value: the bound's sign is stored", CALL(qel_cpx_vec_max_value(&v.Z, s)), 1, 1, 0, 0,
     -2, -2, 0},
    {"cpx max_value: a NaN bound changes nothing", CALL(qel_cpx_vec_max_value(&v.Z, s)), 0.1f, 0.1f,
     0, 0, kNaN, 0.1f, 0.1f},
    {"smooth: excess 2 halved", CALL(qel_flt_vec_smooth(&v.C, &v.B, s)), 3, 0, 0.5f, 0, 1, 2, 0},
    {"smooth: slope 0 clamps", CALL(qel_flt_vec_smooth(&v.C, &v.B, s)), 3, 0, 0, 0, 1, 1, 0},
    {"smooth: a tie is left, the slope unread", CALL(qel_flt_vec_smooth(&v.C, &v.B, s)), 1, 0, kNaN,
     0, 1, 1, 0},
    {"smooth: a NaN element is left", CALL(qel_flt_vec_smooth(&v.C, &v.B, s)), kNaN1, 0, 0.5f, 0, 1,
     kNaN1, 0},
};

TEST(Arithmetic, WorkedValuesTiesAndNaNWinners) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.why);
    Arrays v;
    for (int k = 0; k < 9; ++k) {
      v.a[k] = v.c[k] = c.a;
      v.ai[k] = v.ci[k] = c.ai;
      v.b[k] = c.b;
      v.bi[k] = c.bi;
    }
    c.call(v, c.s);
    // A NaN of the default pattern stands for any NaN; a payload must be kept.
    const bool exact = bits(c.want) != bits(kNaN);
    for (int k = 0; k < 9; ++k) {
      EXPECT_TRUE(same_value(c.want, v.c[k], exact)) << k << ": " << describe(v.c[k]);
      EXPECT_TRUE(same_value(c.want_im, v.ci[k], true)) << k << ": " << describe(v.ci[k]);
    }
  }
}

TEST(Arithmetic, GainRampAdvancesByRepeatedAddition) {
  const std::vector<float> ones(12, 1.0f);
  std::vector<float> y(12);
  qel_fl_mul_step(y.data(), ones.data(), 0.0f, 0.1f, 12);
  // Ten single-precision additions of 0.1f land one ulp above 1.
  EXPECT_SAME_FLOAT(from_bits(0x3f800001u), y[10]);
}

}  // namespace
}  // namespace qel::test

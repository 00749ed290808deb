// SPDX-License-Identifier: MIT
// The QEL_CHECKED build: each kind of broken promise stops with a message that
// names the function and the promise. Host only (death tests fork); in the
// normal build this file holds no tests. The allowed in-place uses, views and
// empty calls run in the checked build through the other tests.
#include <gtest/gtest.h>

#if defined(QEL_CHECKED) && QEL_CHECKED

#include "support/fake_platform.h"
#include "vector.h"

namespace qel::test {
namespace {

struct Args {
  float a[8] = {}, b[8] = {}, re[8] = {}, im[8] = {}, st[32] = {}, c[4] = {};
  int16_t s[8] = {};
  qel_flt_vec va{8, a}, vb{8, b}, neg{-1, a};
  qel_cpx_vec x{8, re, im};
};

struct Broken {
  const char* function;
  const char* promise;
  void (*call)(Args& g);
};
#define CALL(...)         \
  [](Args& g) {           \
    static_cast<void>(g); \
    __VA_ARGS__;          \
  }

const Broken kBroken[] = {
    {"qel_flt_vec_init", "len >= 0", CALL(qel_flt_vec_init(-1))},
    {"qel_fl_sum", "len >= 0", CALL(qel_fl_sum(g.a, 0, -8))},
    {"qel_flt_vec_add", "A->dim >= 0", CALL(qel_flt_vec_add(&g.neg, &g.vb, &g.vb))},
    {"qel_cpx_vec_power_sum_part", "num >= 0", CALL(qel_cpx_vec_power_sum_part(&g.x, 0, -1))},
    {"qel_flt_vec_set", "not null", CALL(qel_flt_vec_set(nullptr, 1.0f))},
    {"qel_fl_abs_max", "x is not null", CALL(qel_fl_abs_max(nullptr, 2))},
    {"qel_cpx_vec_max_value", "A has arrays",
     CALL(qel_cpx_vec x{2, nullptr, g.b}; qel_cpx_vec_max_value(&x, 1.0f))},
    {"qel_flt_vec_copy_subvec", "within A and B",
     CALL(qel_flt_vec short_b{4, g.b}; qel_flt_vec_copy_subvec(&g.va, 2, 6, &short_b))},
    {"qel_flt_vec_get_subvec", "within v",
     CALL(qel_flt_vec o; qel_flt_vec_get_subvec(&g.va, 3, 8, &o))},
    {"qel_flt_vec_get_subvec", "end >= start - 1",
     CALL(qel_flt_vec o; qel_flt_vec_get_subvec(&g.va, 5, 2, &o))},
    {"qel_flt_vec_copy", "do not overlap",
     CALL(qel_flt_vec head{6, g.a}, shifted{6, g.a + 1}; qel_flt_vec_copy(&head, &shifted))},
    {"qel_flt_vec_add", "does not overlap them",
     CALL(qel_flt_vec shifted{6, g.a + 1}; qel_flt_vec_add(&g.va, &g.vb, &shifted))},
    {"qel_cpx_vec_dot_product", "does not overlap them",
     CALL(qel_cpx_vec crossed{4, g.im, g.re}; qel_cpx_vec_dot_product(&g.x, &g.x, &crossed))},
    {"qel_cpx_vec_scale", "the parts of A do not overlap",
     CALL(qel_cpx_vec halves{4, g.re, g.re + 2}; qel_cpx_vec_scale(&halves, 2.0f))},
    {"qel_cpx_vec_dot_product_flt", "B is C's im or does not overlap C",
     CALL(qel_flt_vec gain{4, g.re}; qel_cpx_vec_dot_product_flt(&g.x, &gain, &g.x))},
    {"qel_cpx_vec_power", "re or im",
     CALL(qel_flt_vec at_offset{4, g.re + 1}; qel_cpx_vec_power(&g.x, &at_offset))},
    {"qel_cpx_vec_inner_product", "point into neither A nor B",
     CALL(qel_cpx_vec_inner_product(&g.x, &g.x, g.re + 3, g.st))},
    {"qel_vec_normalize", "upper half",
     CALL(qel_vec_normalize(reinterpret_cast<int16_t*>(g.a), g.a, 4))},
    {"qel_fl_circular", "delay does not overlap",
     CALL(qel_fl_circular(g.a, g.a + 2, g.b, g.b, 4, 0, 4))},
    {"qel_fl_circular", "delay_len >= 1", CALL(qel_fl_circular(g.a, g.st, g.b, g.b, 0, 0, 2))},
    {"qel_fl_circular", "0 <= delay_write_index < delay_len",
     CALL(qel_fl_circular(g.a, g.st, g.b, g.b, 4, 4, 2))},
    {"qel_fl_maa", "fft_data does not overlap window", CALL(qel_fl_maa(g.st, g.b, g.st + 5, 4))},
    {"qel_flt_fir", "numTaps >= 1", CALL(qel_flt_fir(g.a, g.b, g.st, g.c, 0, 4))},
    {"qel_flt_fir_decimate", "M >= 1", CALL(qel_flt_fir_decimate(g.a, g.b, g.st, g.c, 4, 0, 4))},
    {"qel_flt_fir_interpolate_int16", "L >= 1",
     CALL(qel_flt_fir_interpolate_int16(g.s, g.s, g.st, g.c, 4, -1, 2))},
    {"qel_flt_fir", "pDst does not overlap pState",
     CALL(qel_flt_fir(g.a, g.st + 4, g.st, g.c, 4, 4))},
    {"qel_flt_fir_interpolate", "pDst is pSrc or does not overlap it",
     CALL(qel_flt_fir_interpolate(g.a, g.a + 1, g.st, g.c, 4, 2, 3))},
    {"qel_fl_dump", "line_num != 0", CALL(qel_fl_dump(g.a, 0, 0))},
};

TEST(Contract, EachKindOfBrokenPromiseStopsWithItsName) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const Broken& b : kBroken) {
    SCOPED_TRACE(b.promise);
    // The child echoes the console to stderr, where the death test reads it.
    EXPECT_DEATH(
        {
          fake::echo_console_to_stderr();
          fake::allow_allocation();
          Args g;
          b.call(g);
        },
        std::string("qel: ") + b.function + ": broken promise: .*" + b.promise);
  }
}

// An empty call needs no array at all.
TEST(Contract, EmptyCallsNeedNoArrays) {
  float st[8] = {}, c[4] = {0.5f};
  qel_flt_vec empty{0, nullptr};
  qel_flt_fir(nullptr, nullptr, st, c, 4, 0);
  qel_flt_vec_var(&empty);
  qel_fl_add(nullptr, nullptr, nullptr, 0);
  SUCCEED() << "no call above trapped";
}

}  // namespace
}  // namespace qel::test

#endif

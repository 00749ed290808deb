// SPDX-License-Identifier: MIT
// The QEL_CHECKED build: each kind of broken promise stops with a message that
// names the function and the promise. Host only (death tests fork); in the
// normal build this file holds no tests.
#include <gtest/gtest.h>

#if defined(QEL_CHECKED) && QEL_CHECKED

#include "support/fake_platform.h"
#include "vector.h"

namespace qel::test {
namespace {

// Runs `statement` in a child with the console echoed to stderr, and expects
// it to die printing "qel: <function>: broken promise: ...<promise>".
#define EXPECT_BROKEN(statement, function, promise) \
  EXPECT_DEATH(                                     \
      {                                             \
        fake::echo_console_to_stderr();             \
        fake::allow_allocation();                   \
        statement;                                  \
      },                                            \
      "qel: " function ": broken promise: .*" promise)

class Contract : public ::testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
  float a[8] = {}, b[8] = {};
  int16_t s[8] = {};
  qel_flt_vec va{8, a}, vb{8, b};
};

TEST_F(Contract, NegativeCounts) {
  EXPECT_BROKEN(qel_flt_vec_init(-1), "qel_flt_vec_init", "len >= 0");
  EXPECT_BROKEN(qel_vec_normalize(s, a, -4), "qel_vec_normalize", "len >= 0");
  EXPECT_BROKEN(qel_short_vec_set(s, 1, -1), "qel_short_vec_set", "len >= 0");
}

TEST_F(Contract, NullPointers) {
  EXPECT_BROKEN(qel_vec_denormalize(nullptr, s, 3), "qel_vec_denormalize", "not null");
  EXPECT_BROKEN(qel_flt_vec_set(nullptr, 1.0f), "qel_flt_vec_set", "not null");
}

TEST_F(Contract, RangesPastDim) {
  qel_flt_vec short_b{4, b};
  EXPECT_BROKEN(qel_flt_vec_copy_subvec(&va, 2, 6, &short_b), "qel_flt_vec_copy_subvec",
                "within A and B");
  qel_flt_vec out;
  EXPECT_BROKEN(qel_flt_vec_get_subvec(&va, 3, 8, &out), "qel_flt_vec_get_subvec", "within v");
}

TEST_F(Contract, StartAfterEnd) {
  qel_flt_vec out;
  EXPECT_BROKEN(qel_flt_vec_get_subvec(&va, 5, 2, &out), "qel_flt_vec_get_subvec",
                "end >= start - 1");
}

TEST_F(Contract, OverlapAtAnOffset) {
  qel_flt_vec shifted{6, a + 1};
  qel_flt_vec head{6, a};
  EXPECT_BROKEN(qel_flt_vec_copy(&head, &shifted), "qel_flt_vec_copy", "do not overlap");
  EXPECT_BROKEN(qel_vec_normalize(reinterpret_cast<int16_t*>(a), a, 4), "qel_vec_normalize",
                "upper half");
}

// Every family refuses a negative driving count, whether it is a len, a num, a
// record's dim or a filter's blockSize.
TEST_F(Contract, NegativeCountsInEveryFamily) {
  qel_flt_vec neg{-1, a};
  float re[4] = {}, im[4] = {}, st[16] = {}, c[4] = {};
  qel_cpx_vec cneg{-2, re, im};
  EXPECT_BROKEN(qel_fl_mul_scale(a, b, 2.0f, -1), "qel_fl_mul_scale", "len >= 0");
  EXPECT_BROKEN(qel_flt_vec_add(&neg, &vb, &vb), "qel_flt_vec_add", "A->dim >= 0");
  EXPECT_BROKEN(qel_cpx_vec_dot_product(&cneg, &cneg, &cneg), "qel_cpx_vec_dot_product",
                "C->dim >= 0");
  EXPECT_BROKEN(qel_cpx_vec_power_sum_part(&cneg, 0, -1), "qel_cpx_vec_power_sum_part", "num >= 0");
  EXPECT_BROKEN(qel_fl_sum(a, 0, -8), "qel_fl_sum", "len >= 0");
  EXPECT_BROKEN(qel_flt_vec_var(&neg), "qel_flt_vec_var", "A->dim >= 0");
  EXPECT_BROKEN(qel_fl_circular(a, st, b, b, 4, 0, -1), "qel_fl_circular", "in_len >= 0");
  EXPECT_BROKEN(qel_fl_maa(a, b, st + 8, -3), "qel_fl_maa", "nfft >= 0");
  EXPECT_BROKEN(qel_short_dump(s, -1, 4), "qel_short_dump", "len >= 0");
  EXPECT_BROKEN(qel_flt_fir(a, b, st, c, 4, -1), "qel_flt_fir", "blockSize >= 0");
}

// A record is dereferenced whatever its count; an array only when the count is
// above 0.
TEST_F(Contract, NullRecordsAndArraysInEveryFamily) {
  float st[16] = {}, c[4] = {};
  qel_cpx_vec no_re{2, nullptr, b};
  EXPECT_BROKEN(qel_flt_vec_scale2(&va, 2.0f, nullptr), "qel_flt_vec_scale2", "not null");
  EXPECT_BROKEN(qel_cpx_vec_max_value(&no_re, 1.0f), "qel_cpx_vec_max_value", "A has arrays");
  EXPECT_BROKEN(qel_cpx_vec_inner_product(&no_re, &no_re, a, nullptr), "qel_cpx_vec_inner_product",
                "A and B have arrays");
  EXPECT_BROKEN(qel_fl_division(a, nullptr, b, 3), "qel_fl_division", "not null");
  EXPECT_BROKEN(qel_fl_abs_max(nullptr, 2), "qel_fl_abs_max", "x is not null");
  EXPECT_BROKEN(qel_fl_circular(a, st, b, nullptr, 4, 0, 2), "qel_fl_circular", "not null");
  EXPECT_BROKEN(qel_cpx_vec_dump(nullptr, 4), "qel_cpx_vec_dump", "m is not null");
  EXPECT_BROKEN(qel_flt_fir_decimate(a, b, nullptr, c, 4, 2, 4), "qel_flt_fir_decimate",
                "pState is not null");
}

// Starts and offsets are indices: never negative. The partial sums do not read
// dim, so nothing is checked against it.
TEST_F(Contract, NegativeStartsAndOffsets) {
  float re[8] = {}, im[8] = {};
  qel_cpx_vec c{8, re, im};
  EXPECT_BROKEN(qel_fl_sum(a, -1, 2), "qel_fl_sum", "offset >= 0");
  EXPECT_BROKEN(qel_flt_vec_sum_part(&va, -2, 2), "qel_flt_vec_sum_part", "start >= 0");
  EXPECT_BROKEN(qel_cpx_vec_power_sum_part(&c, -1, 1), "qel_cpx_vec_power_sum_part", "start >= 0");
}

TEST_F(Contract, FilterLengthsAndFactors) {
  float st[32] = {}, c[4] = {};
  EXPECT_BROKEN(qel_flt_fir(a, b, st, c, 0, 4), "qel_flt_fir", "numTaps >= 1");
  EXPECT_BROKEN(qel_flt_fir_decimate(a, b, st, c, 4, 0, 4), "qel_flt_fir_decimate", "M >= 1");
  EXPECT_BROKEN(qel_flt_fir_decimate_int16(s, s, st, c, 0, 2, 4), "qel_flt_fir_decimate_int16",
                "numTaps >= 1");
  EXPECT_BROKEN(qel_flt_fir_interpolate(a, b, st, c, 4, 0, 2), "qel_flt_fir_interpolate", "L >= 1");
  EXPECT_BROKEN(qel_flt_fir_interpolate_int16(s, s, st, c, 4, -1, 2),
                "qel_flt_fir_interpolate_int16", "L >= 1");
}

TEST_F(Contract, DelayLinePosition) {
  float line[4] = {};
  EXPECT_BROKEN(qel_fl_circular(a, line, b, b, 0, 0, 2), "qel_fl_circular", "delay_len >= 1");
  EXPECT_BROKEN(qel_fl_circular(a, line, b, b, 4, 4, 2), "qel_fl_circular",
                "0 <= delay_write_index < delay_len");
  EXPECT_BROKEN(qel_fl_circular(a, line, b, b, 4, -1, 2), "qel_fl_circular",
                "0 <= delay_write_index < delay_len");
}

TEST_F(Contract, DumpLineNumZero) {
  EXPECT_BROKEN(qel_flt_vec_dump2(&va, 0, 3), "qel_flt_vec_dump2", "line_num != 0");
  EXPECT_BROKEN(qel_fl_dump(a, 0, 0), "qel_fl_dump", "line_num != 0");
}

// Arrays that overlap at an offset, and overlaps a function never allows even
// for the very same array.
TEST_F(Contract, OverlapsEachFamilyRefuses) {
  float re[9] = {}, im[9] = {}, st[24] = {}, c[4] = {};
  qel_flt_vec head{6, a}, shifted{6, a + 1};
  EXPECT_BROKEN(qel_flt_vec_add(&head, &vb, &shifted), "qel_flt_vec_add", "does not overlap them");
  EXPECT_BROKEN(qel_fl_mul_step(a + 2, a, 1.0f, 0.5f, 4), "qel_fl_mul_step", "not overlap");
  EXPECT_BROKEN(qel_flt_vec_pairwise_scale(&head, &shifted), "qel_flt_vec_pairwise_scale",
                "v_scale is A or does not overlap it");
  EXPECT_BROKEN(qel_fl_max(a, a + 1, 0.0f, 4), "qel_fl_max", "B is A or does not overlap it");
  qel_cpx_vec x{4, re, im}, crossed{4, im, re}, halves{4, re, re + 2};
  EXPECT_BROKEN(qel_cpx_vec_dot_product(&x, &x, &crossed), "qel_cpx_vec_dot_product",
                "does not overlap them");
  EXPECT_BROKEN(qel_cpx_vec_scale(&halves, 2.0f), "qel_cpx_vec_scale",
                "the parts of A do not overlap");
  qel_flt_vec gain_on_re{4, re};
  EXPECT_BROKEN(qel_cpx_vec_dot_product_flt(&x, &gain_on_re, &x), "qel_cpx_vec_dot_product_flt",
                "B does not overlap C");
  EXPECT_BROKEN(qel_cpx_vec_inner_product(&x, &x, re + 3, im + 8), "qel_cpx_vec_inner_product",
                "point into neither A nor B");
  qel_flt_vec power_at_offset{4, re + 1};
  EXPECT_BROKEN(qel_cpx_vec_power(&x, &power_at_offset), "qel_cpx_vec_power", "re or im");
  EXPECT_BROKEN(qel_fl_circular(a, a + 2, b, b, 4, 0, 4), "qel_fl_circular",
                "delay does not overlap");
  EXPECT_BROKEN(qel_fl_maa(st, b, st + 5, 4), "qel_fl_maa", "fft_data does not overlap window");
  EXPECT_BROKEN(qel_flt_fir(a, st + 4, st, c, 4, 4), "qel_flt_fir", "pDst does not overlap pState");
  EXPECT_BROKEN(qel_flt_fir(st + 5, b, st, c, 4, 4), "qel_flt_fir", "pSrc does not overlap pState");
  EXPECT_BROKEN(qel_flt_fir_interpolate(a, a + 1, st, c, 4, 2, 3), "qel_flt_fir_interpolate",
                "pDst is pSrc or does not overlap it");
  EXPECT_BROKEN(qel_flt_fir_decimate(a, b, st, st + 2, 4, 2, 4), "qel_flt_fir_decimate",
                "pCoeffs does not overlap pState");
}

// Every in-place use, view and empty call a function allows still runs.
TEST_F(Contract, AllowedUsesRunInTheCheckedBuild) {
  float re[8] = {1, 2, 3, 4, 5, 6, 7, 8}, im[8] = {}, st[40] = {}, c[4] = {0.5f};
  qel_cpx_vec x{8, re, im};
  qel_flt_vec_add(&va, &vb, &va);
  qel_flt_vec_subtract_min(&va, &vb, 1.0f, &vb);
  qel_cpx_vec_dot_product(&x, &x, &x);
  qel_flt_vec on_re{8, re}, on_im{8, im};
  qel_cpx_vec_power(&x, &on_re);
  qel_cpx_vec_abs(&x, &on_im);
  qel_fl_division(a, a, b, 8);
  qel_flt_vec foreign{-7, a};  // the partial sums never read dim
  qel_flt_vec_sum_part(&foreign, 2, 6);
  qel_cpx_vec cforeign{-7, re, im};
  qel_cpx_vec_power_sum_part(&cforeign, 1, 7);
  qel_fl_circular(a, st, a, a, 4, 3, 8);  // out is in and gain
  qel_fl_maa(a, a, st + 7, 8);            // the frame is buff
  qel_flt_fir(a, a, st, c, 4, 8);
  qel_flt_fir(nullptr, nullptr, st, c, 4, 0);  // blockSize 0 needs no block
  qel_flt_fir_decimate_int16(s, s, st, c, 4, 3, 8);
  qel_flt_fir_interpolate(a, a, st, c, 4, 2, 4);  // a holds L * blockSize
  qel_fl_dump(a, 3, -2);                          // a negative line_num breaks as its magnitude
  qel_flt_vec view;
  qel_flt_vec_get_subvec(&va, 2, 5, &view);
  qel_flt_vec_scale2(&view, 2.0f, &view);
  qel_flt_vec_get_subvec(&va, 3, 2, &view);  // end == start - 1: an empty view
  qel_flt_vec_max_value(&view, 0.0f, &view);
  qel_flt_vec empty{0, nullptr};  // an empty record needs no array
  qel_flt_vec_var(&empty);
  qel_fl_add(nullptr, nullptr, nullptr, 0);
  SUCCEED() << "no call above trapped";
}

TEST_F(Contract, AllowedUsesStillWork) {
  qel_flt_vec_copy(&va, &va);
  qel_vec_denormalize(a, reinterpret_cast<int16_t*>(a), 8);
  qel_flt_vec out;
  qel_flt_vec_get_subvec(&va, 3, 2, &out);
  EXPECT_EQ(out.dim, 0);
}

}  // namespace
}  // namespace qel::test

#endif

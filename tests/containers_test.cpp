// SPDX-License-Identifier: MIT
// Vector lifecycle (allocation sizes, order, release), fill, copy and views.
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "support/fake_platform.h"
#include "support/values.h"
#include "vector.h"

extern "C" int qel_c_api_smoke(void);

namespace qel::test {
namespace {

using fake::Block;

// Every lifecycle test creates vectors on purpose.
class Lifecycle : public ::testing::Test {
 protected:
  void SetUp() override { fake::allow_allocation(); }
  void TearDown() override { EXPECT_EQ(fake::live_blocks(), 0) << "a block was leaked"; }
};

std::vector<float> iota_values(int n, float first) {
  std::vector<float> v(static_cast<size_t>(n));
  std::iota(v.begin(), v.end(), first);
  return v;
}

void fill(qel_flt_vec* v, const std::vector<float>& values) {
  std::copy(values.begin(), values.end(), v->data);
}

TEST_F(Lifecycle, ComplexInitAsksForRecordThenTwoZeroedArrays) {
  qel_cpx_vec* v = qel_cpx_vec_init(5);
  ASSERT_EQ(fake::blocks().size(), 3u);
  EXPECT_EQ(fake::blocks()[0].size, sizeof(qel_cpx_vec));
  EXPECT_EQ(fake::blocks()[0].ptr, v);
  EXPECT_EQ(fake::blocks()[1].size, 20u);
  EXPECT_EQ(fake::blocks()[1].ptr, v->re);
  EXPECT_EQ(fake::blocks()[2].size, 20u);
  EXPECT_EQ(fake::blocks()[2].ptr, v->im);
  EXPECT_EQ(v->dim, 5);
  for (int k = 0; k < 5; ++k) {
    EXPECT_EQ(bits(v->re[k]), 0u);
    EXPECT_EQ(bits(v->im[k]), 0u);
  }
  qel_cpx_vec_free(v);
}

TEST_F(Lifecycle, RealInitAsksForRecordThenOneArray) {
  qel_flt_vec* v = qel_flt_vec_init(3);
  ASSERT_EQ(fake::blocks().size(), 2u);
  EXPECT_EQ(fake::blocks()[0].size, sizeof(qel_flt_vec));
  EXPECT_EQ(fake::blocks()[1].size, 12u);
  EXPECT_EQ(fake::blocks()[1].ptr, v->data);
  EXPECT_EQ(v->dim, 3);
  for (int k = 0; k < 3; ++k) EXPECT_EQ(bits(v->data[k]), 0u);
  qel_flt_vec_free(v);
}

TEST_F(Lifecycle, EmptyVectorHandsItsZeroByteBlocksBack) {
  qel_cpx_vec* v = qel_cpx_vec_init(0);
  void* re = v->re;
  void* im = v->im;
  EXPECT_EQ(v->dim, 0);
  EXPECT_EQ(fake::blocks()[1].size, 0u);
  EXPECT_EQ(fake::blocks()[2].size, 0u);
  qel_cpx_vec_free(v);
  ASSERT_EQ(fake::blocks().size(), 6u);
  EXPECT_EQ(fake::blocks()[3].ptr, im);
  EXPECT_EQ(fake::blocks()[4].ptr, re);
}

TEST_F(Lifecycle, FreeReleasesArraysBeforeRecordImBeforeRe) {
  qel_cpx_vec* c = qel_cpx_vec_init(2);
  void *rec = c, *re = c->re, *im = c->im;
  qel_cpx_vec_free(c);
  ASSERT_EQ(fake::blocks().size(), 6u);
  EXPECT_FALSE(fake::blocks()[3].is_alloc);
  EXPECT_EQ(fake::blocks()[3].ptr, im);
  EXPECT_EQ(fake::blocks()[4].ptr, re);
  EXPECT_EQ(fake::blocks()[5].ptr, rec);

  qel_flt_vec* r = qel_flt_vec_init(2);
  void *rrec = r, *data = r->data;
  qel_flt_vec_free(r);
  ASSERT_EQ(fake::blocks().size(), 10u);
  EXPECT_EQ(fake::blocks()[8].ptr, data);
  EXPECT_EQ(fake::blocks()[9].ptr, rrec);
}

struct ResizeCase {
  int from, to;
  const char* why;
};
constexpr ResizeCase kResizeCases[] = {
    {4, 7, "growing keeps every element and appends zeros"},
    {6, 2, "shrinking keeps the leading elements"},
    {5, 5, "the same dim still makes a new vector"},
    {3, 0, "to 0 gives an empty vector"},
    {0, 3, "from empty gives zeros"},
};

TEST_F(Lifecycle, ResizeRealMakesNewVectorAndReleasesOld) {
  for (const ResizeCase& c : kResizeCases) {
    SCOPED_TRACE(c.why);
    fake::reset();
    fake::allow_allocation();
    qel_flt_vec* v = qel_flt_vec_init(c.from);
    fill(v, iota_values(c.from, 1.0f));
    void *old_rec = v, *old_data = v->data;
    qel_flt_vec* r = qel_flt_vec_resize(v, c.to);
    // init(from): 2 blocks; init(to): 2 blocks; free(old): data then record.
    ASSERT_EQ(fake::blocks().size(), 6u);
    EXPECT_EQ(fake::blocks()[3].size, static_cast<size_t>(c.to) * 4u);
    EXPECT_EQ(fake::blocks()[4].ptr, old_data);
    EXPECT_EQ(fake::blocks()[5].ptr, old_rec);
    EXPECT_NE(static_cast<void*>(r), old_rec);
    EXPECT_EQ(r->dim, c.to);
    for (int k = 0; k < c.to; ++k) {
      EXPECT_SAME_FLOAT(k < c.from ? static_cast<float>(k + 1) : 0.0f, r->data[k]) << "k=" << k;
    }
    qel_flt_vec_free(r);
  }
}

TEST_F(Lifecycle, ResizeComplexKeepsBothParts) {
  for (const ResizeCase& c : kResizeCases) {
    SCOPED_TRACE(c.why);
    fake::reset();
    fake::allow_allocation();
    qel_cpx_vec* v = qel_cpx_vec_init(c.from);
    for (int k = 0; k < c.from; ++k) {
      v->re[k] = static_cast<float>(k + 1);
      v->im[k] = -static_cast<float>(k + 1);
    }
    void *old_rec = v, *old_re = v->re, *old_im = v->im;
    qel_cpx_vec* r = qel_cpx_vec_resize(v, c.to);
    ASSERT_EQ(fake::blocks().size(), 9u);
    EXPECT_EQ(fake::blocks()[6].ptr, old_im);
    EXPECT_EQ(fake::blocks()[7].ptr, old_re);
    EXPECT_EQ(fake::blocks()[8].ptr, old_rec);
    EXPECT_EQ(r->dim, c.to);
    for (int k = 0; k < c.to; ++k) {
      const bool kept = k < c.from;
      EXPECT_SAME_FLOAT(kept ? static_cast<float>(k + 1) : 0.0f, r->re[k]);
      EXPECT_SAME_FLOAT(kept ? -static_cast<float>(k + 1) : 0.0f, r->im[k]);
    }
    qel_cpx_vec_free(r);
  }
}

TEST_F(Lifecycle, CloneOfAViewIsIndependentOwningVector) {
  float re[5] = {1, 2, 3, 4, 5}, im[5] = {-1, -2, -3, -4, -5};
  qel_cpx_vec parent = {5, re, im}, view;
  qel_cpx_vec_get_subvec(&parent, 1, 3, &view);
  qel_cpx_vec* c = qel_cpx_vec_clone(&view);
  ASSERT_EQ(fake::allocations(), 3);
  EXPECT_EQ(fake::blocks()[1].size, 12u);
  EXPECT_EQ(c->dim, 3);
  EXPECT_NE(c->re, view.re);
  for (int k = 0; k < 3; ++k) {
    EXPECT_SAME_FLOAT(re[k + 1], c->re[k]);
    EXPECT_SAME_FLOAT(im[k + 1], c->im[k]);
  }
  c->re[0] = 99.0f;
  EXPECT_SAME_FLOAT(2.0f, re[1]);
  re[2] = -7.0f;
  EXPECT_SAME_FLOAT(3.0f, c->re[1]);
  qel_cpx_vec_free(c);
}

TEST_F(Lifecycle, CloneRealCopiesBitsIncludingSpecials) {
  float data[4] = {-0.0f, kNaN, kDenormMin, -kInf};
  qel_flt_vec src = {4, data};
  qel_flt_vec* c = qel_flt_vec_clone(&src);
  EXPECT_EQ(fake::allocations(), 2);
  for (int k = 0; k < 4; ++k) EXPECT_EQ(bits(data[k]), bits(c->data[k]));
  qel_flt_vec_free(c);
}

TEST_F(Lifecycle, HeaderIsUsableFromC) { EXPECT_EQ(qel_c_api_smoke(), 0); }

// ---- fill, copy, views: no allocation ----

TEST(Fill, SetsEveryElementAndNothingPast) {
  Canary<float> re(6), im(6), data(6);
  qel_cpx_vec c = cpx_record(re, im);
  qel_flt_vec r = flt_record(data);
  qel_cpx_vec_set(&c, 1.5f, -0.0f);
  qel_flt_vec_set(&r, kDenormMin);
  for (int k = 0; k < 6; ++k) {
    EXPECT_SAME_FLOAT(1.5f, re[k]);
    EXPECT_SAME_FLOAT(-0.0f, im[k]);
    EXPECT_SAME_FLOAT(kDenormMin, data[k]);
  }
  EXPECT_TRUE(re.intact() && im.intact() && data.intact());
}

TEST(Fill, ShortArrayUsesLenAndEmptyWritesNothing) {
  Canary<int16_t> s(5, 7);
  qel_short_vec_set(s.data(), -32768, 3);
  EXPECT_EQ(s[0], -32768);
  EXPECT_EQ(s[2], -32768);
  EXPECT_EQ(s[3], 7);
  qel_short_vec_set(s.data(), 1, 0);
  EXPECT_EQ(s[0], -32768);
  EXPECT_TRUE(s.intact());
}

TEST(Fill, ViewOfRangeSetsOnlyThatRange) {
  float data[6] = {0, 0, 0, 0, 0, 0};
  qel_flt_vec parent = {6, data}, view;
  qel_flt_vec_get_subvec(&parent, 2, 4, &view);
  qel_flt_vec_set(&view, 3.0f);
  const float want[6] = {0, 0, 3, 3, 3, 0};
  expect_same_values(want, data, 6);
}

TEST(Copy, DestinationDimDrivesWholeCopy) {
  Canary<float> src(std::vector<float>{1, 2, 3, 4, 5}), dst(3);
  qel_flt_vec a = flt_record(src), b = flt_record(dst);
  qel_flt_vec_copy(&a, &b);
  const float want[3] = {1, 2, 3};
  expect_same_values(want, dst.data(), 3);
  EXPECT_TRUE(dst.intact());
  EXPECT_EQ(b.dim, 3);
}

TEST(Copy, ComplexSharingOnlyReStillGetsIm) {
  float re[3] = {1, 2, 3}, im_a[3] = {4, 5, 6}, im_b[3] = {0, 0, 0};
  qel_cpx_vec a = {3, re, im_a}, b = {3, re, im_b};
  qel_cpx_vec_copy(&a, &b);
  expect_same_values(im_a, im_b, 3);
  expect_same_values(std::vector<float>{1, 2, 3}.data(), re, 3);
}

TEST(Copy, OntoItselfIsHarmless) {
  float data[3] = {1, kNaN, -0.0f};
  qel_flt_vec a = {3, data};
  qel_flt_vec_copy(&a, &a);
  EXPECT_SAME_FLOAT(-0.0f, data[2]);
}

struct RangeCase {
  int start, end;
  std::vector<float> want;
  const char* why;
};

TEST(Copy, RangeKeepsIndicesAndIsInclusive) {
  const std::vector<RangeCase> cases = {
      {1, 3, {0, 2, 3, 4, 0, 0}, "elements 1..3 land at 1..3"},
      {2, 2, {0, 0, 0, 0, 0, 0}, "end == start copies nothing"},
      {2, 3, {0, 0, 3, 4, 0, 0}, "end == start + 1 copies two"},
      {4, 1, {0, 0, 0, 0, 0, 0}, "end < start copies nothing"},
      {0, 5, {1, 2, 3, 4, 5, 6}, "the whole vector"},
  };
  for (const RangeCase& c : cases) {
    SCOPED_TRACE(c.why);
    Canary<float> src(std::vector<float>{1, 2, 3, 4, 5, 6}), dst(6), im_src(6), im_dst(6);
    qel_flt_vec a = flt_record(src), b = flt_record(dst);
    qel_flt_vec_copy_subvec(&a, c.start, c.end, &b);
    EXPECT_EQ(b.dim, 6);
    expect_same_values(c.want.data(), dst.data(), 6);
    EXPECT_TRUE(dst.intact());

    // The complex form: same rule for re, and im follows it.
    Canary<float> cre(6);
    for (int k = 0; k < 6; ++k) im_src[k] = -src[k];
    qel_cpx_vec ca = cpx_record(src, im_src), cb = cpx_record(cre, im_dst);
    qel_cpx_vec_copy_subvec(&ca, c.start, c.end, &cb);
    expect_same_values(c.want.data(), cre.data(), 6);
    for (int k = 0; k < 6; ++k)
      EXPECT_SAME_FLOAT(
          c.want[static_cast<size_t>(k)] == 0 ? 0.0f : -c.want[static_cast<size_t>(k)], im_dst[k]);
  }
}

TEST(Copy, ComplexRangeSharingReCopiesIm) {
  float re[4] = {1, 2, 3, 4}, im_a[4] = {5, 6, 7, 8}, im_b[4] = {0, 0, 0, 0};
  qel_cpx_vec a = {4, re, im_a}, b = {4, re, im_b};
  qel_cpx_vec_copy_subvec(&a, 1, 2, &b);
  const float want[4] = {0, 6, 7, 0};
  expect_same_values(want, im_b, 4);
}

TEST(View, DimPointersAndNarrowingInPlace) {
  float re[8], im[8];
  qel_cpx_vec v = {8, re, im}, out;
  qel_cpx_vec_get_subvec(&v, 3, 3, &out);
  EXPECT_EQ(out.dim, 1);
  EXPECT_EQ(out.re, re + 3);
  EXPECT_EQ(out.im, im + 3);
  qel_cpx_vec_get_subvec(&v, 3, 2, &out);
  EXPECT_EQ(out.dim, 0);
  qel_cpx_vec_get_subvec(&v, 2, 6, &v);  // out is v: narrowed in place
  EXPECT_EQ(v.dim, 5);
  EXPECT_EQ(v.re, re + 2);
  EXPECT_EQ(v.im, im + 2);

  float data[8];
  qel_flt_vec r = {8, data};
  qel_flt_vec_get_subvec(&r, 5, 7, &r);
  EXPECT_EQ(r.dim, 3);
  EXPECT_EQ(r.data, data + 5);
}

}  // namespace
}  // namespace qel::test

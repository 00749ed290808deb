// SPDX-License-Identifier: MIT
// Vector lifecycle (allocation sizes, order, release), and the worked range
// copies and views; fills and copies are in the differential table.
#include <gtest/gtest.h>

#include <vector>

#include "support/fake_platform.h"
#include "support/values.h"
#include "vector.h"

extern "C" int qel_c_api_smoke(void);

namespace qel::test {
namespace {

// Every lifecycle test creates vectors on purpose, and must give them back.
class Lifecycle : public ::testing::Test {
 protected:
  void SetUp() override { fake::allow_allocation(); }
  void TearDown() override { EXPECT_EQ(fake::live_blocks(), 0) << "a block was leaked"; }
};

// The calls to the allocator from `first` on: +size for a block asked for,
// -k for the release of the k-th block of the test (counting from 1).
std::vector<long> calls(size_t first = 0) {
  std::vector<long> out;
  const auto& b = fake::blocks();
  for (size_t i = first; i < b.size(); ++i) {
    if (b[i].is_alloc) {
      out.push_back(static_cast<long>(b[i].size));
      continue;
    }
    for (size_t j = 0; j < i; ++j) {
      if (b[j].is_alloc && b[j].ptr == b[i].ptr) out.push_back(-static_cast<long>(j + 1));
    }
  }
  return out;
}

TEST_F(Lifecycle, InitAsksForRecordThenZeroedArraysFreeGivesThemBackInReverse) {
  const long cpx = sizeof(qel_cpx_vec), flt = sizeof(qel_flt_vec);
  qel_cpx_vec* c = qel_cpx_vec_init(5);
  qel_flt_vec* r = qel_flt_vec_init(3);
  qel_cpx_vec* e = qel_cpx_vec_init(0);
  EXPECT_EQ(c->dim, 5);
  EXPECT_EQ(r->dim, 3);
  EXPECT_EQ(e->dim, 0);
  for (int k = 0; k < 5; ++k) EXPECT_EQ(bits(c->re[k]) | bits(c->im[k]), 0u);
  for (int k = 0; k < 3; ++k) EXPECT_EQ(bits(r->data[k]), 0u);
  EXPECT_EQ(fake::blocks()[1].ptr, c->re);
  qel_cpx_vec_free(c);
  qel_flt_vec_free(r);
  qel_cpx_vec_free(e);  // the blocks of 0 bytes go back too
  EXPECT_EQ(calls(),
            (std::vector<long>{cpx, 20, 20, flt, 12, cpx, 0, 0, -3, -2, -1, -5, -4, -8, -7, -6}));
}

TEST_F(Lifecycle, ResizeMakesANewVectorOfLeadingElementsAndZeros) {
  const struct { int from, to; } kResizes[] = {{4, 7}, {6, 2}, {5, 5}, {3, 0}, {0, 3}};
  for (const auto& c : kResizes) {
    SCOPED_TRACE(testing::Message() << c.from << " to " << c.to);
    fake::reset();
    fake::allow_allocation();
    qel_flt_vec* r = qel_flt_vec_init(c.from);
    qel_cpx_vec* x = qel_cpx_vec_init(c.from);
    for (int k = 0; k < c.from; ++k)
      r->data[k] = x->re[k] = -(x->im[k] = -1.0f - static_cast<float>(k));
    const size_t first = fake::blocks().size();
    r = qel_flt_vec_resize(r, c.to);
    x = qel_cpx_vec_resize(x, c.to);
    const long to = 4L * c.to, flt = sizeof(qel_flt_vec), cpx = sizeof(qel_cpx_vec);
    // New record and arrays first, then the old arrays and record released.
    EXPECT_EQ(calls(first), (std::vector<long>{flt, to, -2, -1, cpx, to, to, -5, -4, -3}));
    ASSERT_EQ(r->dim, c.to);
    ASSERT_EQ(x->dim, c.to);
    for (int k = 0; k < c.to; ++k) {
      const float want = k < c.from ? static_cast<float>(k + 1) : 0.0f;  // new elements +0
      EXPECT_SAME_FLOAT(want, r->data[k]);
      EXPECT_SAME_FLOAT(want, x->re[k]);
      EXPECT_SAME_FLOAT(k < c.from ? -want : 0.0f, x->im[k]);
    }
    qel_flt_vec_free(r);
    qel_cpx_vec_free(x);
  }
}

TEST_F(Lifecycle, CloneOfAViewOwnsItsOwnCopy) {
  float re[5] = {1, 2, 3, 4, 5}, im[5] = {-1, kNaN, -0.0f, kDenormMin, -5};
  qel_cpx_vec parent = {5, re, im}, view;
  qel_cpx_vec_get_subvec(&parent, 1, 3, &view);
  qel_cpx_vec* c = qel_cpx_vec_clone(&view);
  qel_flt_vec real = {3, im + 1};
  qel_flt_vec* r = qel_flt_vec_clone(&real);
  EXPECT_EQ(calls(), (std::vector<long>{sizeof(qel_cpx_vec), 12, 12, sizeof(qel_flt_vec), 12}));
  ASSERT_EQ(c->dim, 3);
  ASSERT_EQ(r->dim, 3);
  for (int k = 0; k < 3; ++k) {
    EXPECT_SAME_FLOAT(re[k + 1], c->re[k]);
    EXPECT_EQ(bits(im[k + 1]), bits(c->im[k]));
    EXPECT_EQ(bits(im[k + 1]), bits(r->data[k]));
  }
  c->re[0] = 99.0f;  // the two own separate arrays
  EXPECT_SAME_FLOAT(2.0f, re[1]);
  qel_cpx_vec_free(c);
  qel_flt_vec_free(r);
}

TEST_F(Lifecycle, HeaderIsUsableFromC) { EXPECT_EQ(qel_c_api_smoke(), 0); }

TEST(Containers, RangeCopiesAndViewsKeepIndices) {
  const float src[6] = {1, 2, 3, 4, 5, 6};
  float none[6] = {}, two[6] = {}, re[6] = {}, im[6] = {};
  qel_flt_vec a = {6, const_cast<float*>(src)}, b = {6, none}, c = {6, two};
  qel_flt_vec_copy_subvec(&a, 2, 2, &b);  // end == start copies nothing
  qel_flt_vec_copy_subvec(&a, 2, 3, &c);  // end == start + 1 copies two
  qel_cpx_vec x = {6, const_cast<float*>(src), const_cast<float*>(src)}, y = {6, re, im};
  qel_cpx_vec_copy_subvec(&x, 1, 3, &y);
  const float want_two[6] = {0, 0, 3, 4, 0, 0}, want_part[6] = {0, 2, 3, 4, 0, 0};
  expect_same_values(std::vector<float>(6, 0.0f).data(), none, 6, "end == start");
  expect_same_values(want_two, two, 6, "end == start + 1");
  expect_same_values(want_part, re, 6, "complex re");
  expect_same_values(want_part, im, 6, "complex im");

  // A view's elements are the parent's; end == start gives dim 1, start - 1 dim 0.
  qel_flt_vec view, one, empty;
  qel_flt_vec_get_subvec(&c, 1, 4, &view);
  qel_flt_vec_set(&view, -1.0f);
  qel_flt_vec_get_subvec(&c, 3, 3, &one);
  qel_flt_vec_get_subvec(&c, 3, 2, &empty);
  const float want_set[6] = {0, -1, -1, -1, -1, 0};
  expect_same_values(want_set, two, 6, "set through a view");
  EXPECT_EQ(view.data, two + 1);
  EXPECT_EQ(one.dim, 1);
  EXPECT_EQ(empty.dim, 0);
  qel_cpx_vec_get_subvec(&y, 2, 5, &y);  // out is v: narrowed in place
  EXPECT_EQ(y.dim, 4);
  EXPECT_EQ(y.re, re + 2);
  EXPECT_EQ(y.im, im + 2);
}

}  // namespace
}  // namespace qel::test

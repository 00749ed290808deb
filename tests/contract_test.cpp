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

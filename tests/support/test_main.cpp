// SPDX-License-Identifier: MIT
// Test main: resets the platform fakes before every test and fails any test
// that allocated without saying so (only the lifecycle functions allocate).
#include <gtest/gtest.h>

#include "support/fake_platform.h"
#include "support/soak.h"

namespace {

class AllocationGuard : public ::testing::EmptyTestEventListener {
  void OnTestStart(const ::testing::TestInfo&) override { qel::test::fake::reset(); }
  void OnTestEnd(const ::testing::TestInfo& info) override {
    namespace fake = qel::test::fake;
    if (fake::allocations() > 0 && !fake::allocation_allowed()) {
      ADD_FAILURE() << info.test_suite_name() << "." << info.name() << " allocated "
                    << fake::allocations() << " block(s) outside the lifecycle tests";
    }
  }
};

}  // namespace

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  qel::test::parse_soak_flags(&argc, argv);
  ::testing::UnitTest::GetInstance()->listeners().Append(new AllocationGuard);
  return RUN_ALL_TESTS();
}

#include "Tidewell/Accounting/ChildrenCharge.h"

#include <gtest/gtest.h>

#include <vector>

namespace tidewell {
namespace {

constexpr Usage kPlenty{1'000'000, 1'000'000};

TEST(ChildrenChargeTest, CreditsWhatWasUsedUnseenAndTheOwnBytes) {
  ChildrenCharge reaped;
  reaped.grow(7, 70);
  EXPECT_EQ(reaped.settle(kPlenty, 0), (Usage{7, 70}));
  EXPECT_EQ(reaped.settle(kPlenty, 0), Usage());
}

TEST(ChildrenChargeTest, TakesOutWhatHadBeenSeen) {
  ChildrenCharge reaped;
  reaped.grow(7, 70);
  EXPECT_TRUE(reaped.claim({5, 50}, 0));
  EXPECT_FALSE(reaped.claim({3, 30}, 0)) << "only 2 are left";
  EXPECT_TRUE(reaped.claim({3, 0}, 1)) << "the kernel may have cut 3 to 2";
  EXPECT_EQ(reaped.settle(kPlenty, 0), (Usage{0, 20}));
}

TEST(ChildrenChargeTest, WhatTheKernelCutsOffDoesNotAddUp) {
  ChildrenCharge reaped;
  for (int pass = 0; pass < 10; ++pass) {
    // Each child used 10. The kernel tells 9 at first, and the rest with the next child.
    reaped.grow(pass == 0 ? 9 : 10, 0);
    EXPECT_TRUE(reaped.claim({10, 0}, 1));
    EXPECT_EQ(reaped.settle(kPlenty, 1), Usage());
  }
  reaped.grow(1, 0);
  EXPECT_EQ(reaped.settle(kPlenty, 1), Usage()) << "this is the rest of the last child";
}

TEST(ChildrenChargeTest, ADebtIsClaimedFromTheNextGrowthOrGivenUp) {
  ChildrenCharge reaped;
  reaped.claimOnNext({5, 50});
  EXPECT_EQ(reaped.settle(kPlenty, 0), Usage());
  reaped.grow(8, 80);
  EXPECT_EQ(reaped.settle(kPlenty, 0), (Usage{3, 30}));

  reaped.claimOnNext({5, 50});
  EXPECT_EQ(reaped.settle(kPlenty, 0), Usage());
  EXPECT_EQ(reaped.settle(kPlenty, 0), Usage());
  reaped.grow(8, 80);
  EXPECT_EQ(reaped.settle(kPlenty, 0), (Usage{8, 80}));
}

TEST(ChildrenChargeTest, DropsTimeBeyondTheMost) {
  ChildrenCharge reaped;
  reaped.grow(40, 800);
  EXPECT_EQ(reaped.settle({10, 1000}, 0), (Usage{10, 800}));
  EXPECT_EQ(reaped.settle({10, 1000}, 0), Usage()) << "the rest is not credited later";
}

TEST(ChildrenChargeTest, DropsBytesBeyondTheMostIfSomeMayBeOfReapedChildren) {
  ChildrenCharge reaped;
  reaped.grow(4, 5000);
  EXPECT_EQ(reaped.settle({10, 1000}, 0), (Usage{4, 1000}));
  EXPECT_EQ(reaped.settle({10, 1000}, 0), Usage());
}

TEST(ChildrenChargeTest, NeverCutsTheBytesOfAProcessThatReapedNobody) {
  ChildrenCharge reaped;
  reaped.grow(0, 5000);
  EXPECT_EQ(reaped.settle({10, 1000}, 0), (Usage{0, 5000}));
  reaped.grow(4, 0);
  EXPECT_EQ(reaped.settle({10, 1000}, 0), (Usage{4, 0}));
  EXPECT_EQ(reaped.settle({10, 1000}, 0), Usage());
  reaped.grow(0, 5000);
  EXPECT_EQ(reaped.settle({10, 1000}, 0), (Usage{0, 5000}))
      << "long after the last child was reaped";
}

TEST(ChildrenChargeTest, CutsTheBytesOfAProcessThatIsReadForTheFirstTime) {
  ChildrenCharge reaped;
  reaped.begin(0, 5000);
  EXPECT_EQ(reaped.settle({10, 1000}, 0), (Usage{0, 1000}));
}

TEST(ChildrenChargeTest, DebtsAreClaimedFromTheFirstReading) {
  ChildrenCharge reaped;
  reaped.claimOnNext({5, 50});
  reaped.begin(8, 80);
  EXPECT_EQ(reaped.settle(kPlenty, 0), (Usage{3, 30}));
}

TEST(ChildrenChargeTest, HandsOverItsDebts) {
  ChildrenCharge reaped;
  reaped.claimOnNext({5, 50});
  reaped.claimOnNext({6, 60});
  EXPECT_EQ(reaped.takeDebts(), (std::vector<Usage>{{5, 50}, {6, 60}}));
  EXPECT_TRUE(reaped.takeDebts().empty());
}

TEST(ChildrenChargeTest, OfTooManyDebtsTheOldestBecomeOne) {
  ChildrenCharge reaped;
  for (int child = 0; child < 1000; ++child)
    reaped.claimOnNext({1, 10});
  const std::vector<Usage> debts = reaped.takeDebts();
  ASSERT_EQ(debts.size(), 256u);
  EXPECT_EQ(debts.front(), (Usage{745, 7450}));
  EXPECT_EQ(debts.back(), (Usage{1, 10}));
}

}  // namespace
}  // namespace tidewell

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
  EXPECT_TRUE(reaped.claim({3, 0}, 1)) << "they may have been 3";
  EXPECT_EQ(reaped.settle(kPlenty, 0), (Usage{0, 20}));
}

TEST(ChildrenChargeTest, AnErrorOfRoundingDoesNotAddUp) {
  ChildrenCharge reaped;
  for (int pass = 0; pass < 10; ++pass) {
    // Of 10 each time, 9 are told at first and the rest with the next.
    reaped.grow(pass == 0 ? 9 : 10, 0);
    EXPECT_TRUE(reaped.claim({10, 0}, 1));
    EXPECT_EQ(reaped.settle(kPlenty, 1), Usage());
  }
  reaped.grow(1, 0);
  EXPECT_EQ(reaped.settle(kPlenty, 1), Usage()) << "even now";
}

TEST(ChildrenChargeTest, ClaimsOnTheNextGrowthOrNever) {
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
  EXPECT_EQ(reaped.settle({10, 1000}, 0), Usage()) << "it does not come later";
}

TEST(ChildrenChargeTest, DropsBytesBeyondTheMostWhereSomeMayBeOfReapedChildren) {
  ChildrenCharge reaped;
  reaped.grow(4, 5000);
  EXPECT_EQ(reaped.settle({10, 1000}, 0), (Usage{4, 1000}));
  EXPECT_EQ(reaped.settle({10, 1000}, 0), Usage());
}

TEST(ChildrenChargeTest, NeverCutsTheBytesOfOneThatReapedNobody) {
  ChildrenCharge reaped;
  reaped.grow(0, 5000);
  EXPECT_EQ(reaped.settle({10, 1000}, 0), (Usage{0, 5000}));
  reaped.grow(4, 0);
  EXPECT_EQ(reaped.settle({10, 1000}, 0), (Usage{4, 0}));
  EXPECT_EQ(reaped.settle({10, 1000}, 0), Usage());
  reaped.grow(0, 5000);
  EXPECT_EQ(reaped.settle({10, 1000}, 0), (Usage{0, 5000})) << "long after";
}

TEST(ChildrenChargeTest, CutsWhatOneHadThatIsReadForTheFirstTime) {
  ChildrenCharge reaped;
  reaped.begin(0, 5000);
  EXPECT_EQ(reaped.settle({10, 1000}, 0), (Usage{0, 1000}));
}

TEST(ChildrenChargeTest, WhatWaitedIsInTheFirstReading) {
  ChildrenCharge reaped;
  reaped.claimOnNext({5, 50});
  reaped.begin(8, 80);
  EXPECT_EQ(reaped.settle(kPlenty, 0), (Usage{3, 30}));
}

TEST(ChildrenChargeTest, HandsOverWhatWaits) {
  ChildrenCharge reaped;
  reaped.claimOnNext({5, 50});
  reaped.claimOnNext({6, 60});
  EXPECT_EQ(reaped.takeDebts(), (std::vector<Usage>{{5, 50}, {6, 60}}));
  EXPECT_TRUE(reaped.takeDebts().empty());
}

TEST(ChildrenChargeTest, OfManyThatWaitTheFirstAreTakenAsOne) {
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

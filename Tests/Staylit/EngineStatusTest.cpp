#include "Staylit/EngineStatus.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "Tests/Staylit/StatusPrinter.h"

namespace staylit {
namespace {

TEST(EngineStatus, SumsUpHoldingForNobody) {
  EXPECT_EQ(EngineStatus::holding({}).summary(), "Holding sleep");
}

TEST(EngineStatus, SumsUpHoldingForOneByName) {
  EXPECT_EQ(EngineStatus::holding({"Xcode"}).summary(), "Awake for Xcode");
}

TEST(EngineStatus, SumsUpHoldingForSeveralByTheFirstNameAndACount) {
  EXPECT_EQ(EngineStatus::holding({"Xcode", "make"}).summary(), "Awake for Xcode +1 more");
  EXPECT_EQ(EngineStatus::holding({"Xcode", "make", "curl"}).summary(), "Awake for Xcode +2 more");
}

TEST(EngineStatus, SumsUpWindingWithItsSeconds) {
  EXPECT_EQ(EngineStatus::winding(45).summary(), "Work stopped \u2014 releasing in 45s");
}

TEST(EngineStatus, SumsUpBlockedWithItsReason) {
  EXPECT_EQ(EngineStatus::blocked("battery below 20%").summary(),
            "Not holding \u2014 battery below 20%");
}

TEST(EngineStatus, SumsUpIdle) {
  EXPECT_EQ(EngineStatus::idle().summary(), "Idle \u2014 your Mac can sleep");
}

TEST(EngineStatus, SumsUpPaused) {
  EXPECT_EQ(EngineStatus::paused().summary(), "Paused");
}

TEST(EngineStatus, TellsProgramsTheCaseByName) {
  EXPECT_EQ(EngineStatus::holding({"Xcode"}).name(), "holding");
  EXPECT_EQ(EngineStatus::winding(45).name(), "winding");
  EXPECT_EQ(EngineStatus::blocked("battery below 20%").name(), "blocked");
  EXPECT_EQ(EngineStatus::idle().name(), "idle");
  EXPECT_EQ(EngineStatus::paused().name(), "paused");
}

TEST(EngineStatus, EqualsTheSameCaseWithTheSamePayload) {
  EXPECT_EQ(EngineStatus::holding({"A", "B"}), EngineStatus::holding({"A", "B"}));
  EXPECT_EQ(EngineStatus::winding(3), EngineStatus::winding(3));
  EXPECT_EQ(EngineStatus::blocked("R"), EngineStatus::blocked("R"));
  EXPECT_EQ(EngineStatus::idle(), EngineStatus::idle());
  EXPECT_EQ(EngineStatus::paused(), EngineStatus::paused());
}

TEST(EngineStatus, DiffersWithAnyOtherPayload) {
  EXPECT_NE(EngineStatus::holding({"A", "B"}), EngineStatus::holding({"B", "A"}));
  EXPECT_NE(EngineStatus::holding({"A"}), EngineStatus::holding({"A", "B"}));
  EXPECT_NE(EngineStatus::holding({"A"}), EngineStatus::holding({"a"}));
  EXPECT_NE(EngineStatus::winding(3), EngineStatus::winding(4));
  EXPECT_NE(EngineStatus::blocked("R"), EngineStatus::blocked("S"));
}

TEST(EngineStatus, DiffersInAnotherCase) {
  const std::vector<EngineStatus> cases{EngineStatus::holding({}), EngineStatus::winding(0),
                                        EngineStatus::blocked(""), EngineStatus::idle(),
                                        EngineStatus::paused()};
  for (std::size_t one = 0; one < cases.size(); ++one) {
    for (std::size_t other = 0; other < cases.size(); ++other)
      EXPECT_EQ(cases[one] == cases[other], one == other) << one << " and " << other;
  }
}

TEST(EngineStatus, IsTheSameStateWhateverItsCountdownAndTheOrderOfItsNames) {
  EXPECT_TRUE(EngineStatus::winding(3).isSameState(EngineStatus::winding(4)));
  EXPECT_TRUE(EngineStatus::holding({"A", "B"}).isSameState(EngineStatus::holding({"B", "A"})));
  EXPECT_TRUE(EngineStatus::idle().isSameState(EngineStatus::idle()));
  EXPECT_TRUE(EngineStatus::blocked("R").isSameState(EngineStatus::blocked("R")));
}

TEST(EngineStatus, IsAnotherStateWithOtherNamesReasonsOrCases) {
  const EngineStatus both = EngineStatus::holding({"A", "B"});
  EXPECT_FALSE(both.isSameState(EngineStatus::holding({"A"})));
  EXPECT_FALSE(both.isSameState(EngineStatus::holding({"A", "C"})));
  EXPECT_FALSE(both.isSameState(EngineStatus::holding({"A", "A"})));
  EXPECT_FALSE(both.isSameState(EngineStatus::idle()));
  EXPECT_FALSE(EngineStatus::idle().isSameState(both));
  EXPECT_FALSE(EngineStatus::winding(3).isSameState(EngineStatus::idle()));
  EXPECT_FALSE(EngineStatus::idle().isSameState(EngineStatus::winding(3)));
  EXPECT_FALSE(EngineStatus::blocked("R").isSameState(EngineStatus::blocked("S")));
}

}  // namespace
}  // namespace staylit

#include "Platform/MacOS/Applications/KeptApplications.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Tests/Fakes/FakeRunningApplications.h"

namespace platform {
namespace {

/// How this system of the test's own knows an application.
struct Launched {
  std::int32_t pid = 0;
  int launch = 0;
  std::optional<std::string> name = "Editor";
};

class KeptApplicationsTest : public ::testing::Test {
 protected:
  using Kept = KeptApplications<Launched>;

  Kept::Application only(const Launched& launched) {
    const auto all = kept.update({launched});
    return all.size() == 1 ? all.front() : nullptr;
  }

  Kept kept{{
      .processIdentifier = [](const Launched& launched) { return launched.pid; },
      .make =
          [](const Launched& launched) {
            return std::make_shared<tidewell::FakeRunningApplication>(
                launched.pid, std::nullopt, launched.name, std::make_shared<int>(0));
          },
      .isSame = [](const Launched& one,
                   const Launched& other) { return one.launch == other.launch; },
      .isSettled =
          [](const tidewell::RunningApplication& application) {
            return application.localizedName().has_value();
          },
  }};
};

TEST_F(KeptApplicationsTest, AnApplicationIsTheSameAsLongAsItRuns) {
  const auto first = only({.pid = 7, .launch = 1});
  EXPECT_EQ(only({.pid = 7, .launch = 1}), first);
  EXPECT_EQ(only({.pid = 7, .launch = 1}), first);
}

TEST_F(KeptApplicationsTest, AnotherOneUnderItsNumberIsAnother) {
  const auto first = only({.pid = 7, .launch = 1});
  const auto second = only({.pid = 7, .launch = 2});
  EXPECT_NE(second, first);
  EXPECT_EQ(only({.pid = 7, .launch = 2}), second);
}

TEST_F(KeptApplicationsTest, OneThatEndedIsForgotten) {
  const std::weak_ptr<const tidewell::RunningApplication> first = only({.pid = 7, .launch = 1});
  EXPECT_FALSE(first.expired());
  EXPECT_TRUE(kept.update({}).empty());
  EXPECT_TRUE(first.expired());
}

TEST_F(KeptApplicationsTest, OneThatIsStillLaunchedIsAskedAnewUntilItIsKnown) {
  const auto nameless = only({.pid = 7, .launch = 1, .name = std::nullopt});
  EXPECT_EQ(nameless->localizedName(), std::nullopt);
  const auto named = only({.pid = 7, .launch = 1, .name = "Editor"});
  EXPECT_EQ(named->localizedName(), "Editor");
  EXPECT_EQ(only({.pid = 7, .launch = 1}), named);
}

TEST_F(KeptApplicationsTest, AllAreGivenInTheirOrder) {
  const auto first = kept.update({{.pid = 9, .launch = 1}, {.pid = 7, .launch = 2}});
  ASSERT_EQ(first.size(), 2U);
  EXPECT_EQ(first[0]->processIdentifier(), 9);
  EXPECT_EQ(first[1]->processIdentifier(), 7);
  const auto second =
      kept.update({{.pid = 7, .launch = 2}, {.pid = 8, .launch = 3}, {.pid = 9, .launch = 1}});
  ASSERT_EQ(second.size(), 3U);
  EXPECT_EQ(second[0], first[1]);
  EXPECT_EQ(second[2], first[0]);
}

TEST_F(KeptApplicationsTest, OfTwoUnderOneNumberTheLaterIsKept) {
  const auto both = kept.update({{.pid = 7, .launch = 1}, {.pid = 7, .launch = 2}});
  ASSERT_EQ(both.size(), 2U);
  EXPECT_EQ(only({.pid = 7, .launch = 2}), both[1]);
}

}  // namespace
}  // namespace platform

#include "Platform/Recorded/RecordedPowerManagement.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Fakes/FakePorts.h"

namespace platform {
namespace {

using Lines = std::vector<std::string>;

class RecordedPowerManagementTest : public ::testing::Test {
 protected:
  tidewell::FakePorts ports;
  RecordedPowerManagement recorded;
};

TEST_F(RecordedPowerManagementTest, HandsOutIdsAndKeepsNames) {
  const auto first = recorded.createAssertion(tidewell::AssertionKind::system, "a");
  const auto second = recorded.createAssertion(tidewell::AssertionKind::display, "b");
  EXPECT_EQ(first.code, 0);
  EXPECT_NE(first.id, 0U);
  EXPECT_NE(first.id, second.id);
  recorded.setAssertionName(first.id, "c");
  EXPECT_EQ(recorded.assertions().at(first.id).name, "c");
  EXPECT_EQ(recorded.assertions().at(first.id).kind, tidewell::AssertionKind::system);
  EXPECT_EQ(recorded.assertions().at(second.id).name, "b");
}

TEST_F(RecordedPowerManagementTest, ForgetsWhatIsReleased) {
  const auto creation = recorded.createAssertion(tidewell::AssertionKind::system, "a");
  recorded.releaseAssertion(creation.id);
  recorded.setAssertionName(creation.id, "b");
  EXPECT_TRUE(recorded.assertions().empty());
}

TEST_F(RecordedPowerManagementTest, SaysThatItsAssertionsAreNotGranted) {
  recorded.createAssertion(tidewell::AssertionKind::system, "a");
  recorded.createAssertion(tidewell::AssertionKind::display, "b");
  const auto live = recorded.liveAssertions();
  ASSERT_EQ(live.size(), 2U);
  EXPECT_EQ(live[0].name, "a");
  EXPECT_EQ(live[1].kind, tidewell::AssertionKind::display);
  EXPECT_TRUE(live[0].grants.empty());
  EXPECT_TRUE(live[1].grants.empty());
}

TEST_F(RecordedPowerManagementTest, SaysOnceThatNothingIsHeld) {
  EXPECT_EQ(ports.log.lines(), Lines{});
  recorded.createAssertion(tidewell::AssertionKind::system, "a");
  recorded.createAssertion(tidewell::AssertionKind::system, "b");
  EXPECT_EQ(ports.log.lines(), Lines{"info: no sleep service here: holds are recorded only"});
}

}  // namespace
}  // namespace platform

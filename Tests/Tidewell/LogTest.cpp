#include "Tidewell/Log.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "Tests/Fakes/FakePorts.h"

namespace tidewell {
namespace {

using Record = FakeSystemLog::Record;
using Records = std::vector<Record>;

class LogTest : public testing::Test {
 protected:
  void TearDown() override {
    Log::setSubsystem("com.tidewell");
    Log::setVerbose(false);
  }

  FakePorts fakes;
};

TEST_F(LogTest, GoesToTheLibrarysOwnSubsystemAtFirst) {
  EXPECT_EQ(Log::subsystem(), "com.tidewell");
  Log::info("early");
  EXPECT_EQ(fakes.log.records(), (Records{{"com.tidewell", "core", LogType::info, "early"}}));
}

TEST_F(LogTest, GoesToANewSubsystemFromThenOn) {
  Log::info("before");
  Log::setSubsystem("com.staylit.app");
  EXPECT_EQ(Log::subsystem(), "com.staylit.app");
  Log::error("after");
  EXPECT_EQ(fakes.log.records(), (Records{{"com.tidewell", "core", LogType::info, "before"},
                                          {"com.staylit.app", "core", LogType::error, "after"}}));
}

TEST_F(LogTest, MakesItsLoggerOnFirstUseAndOnce) {
  EXPECT_EQ(fakes.calls->count("make logger com.tidewell"), 0U);
  Log::info("one");
  Log::error("two");
  Log::diag("three");
  EXPECT_EQ(fakes.calls->count("make logger com.tidewell"), 1U);
}

TEST_F(LogTest, KeepsTheTwoTypesApart) {
  Log::info("a");
  Log::error("b");
  Log::diag("c");
  EXPECT_EQ(fakes.log.lines(), (std::vector<std::string>{"info: a", "error: b", "info: c"}));
}

TEST_F(LogTest, WritesNothingToStandardOutput) {
  Log::setVerbose(true);
  Log::info("a");
  Log::error("b");
  EXPECT_EQ(fakes.console.output, "");
}

TEST_F(LogTest, IsNotVerboseAtFirst) {
  EXPECT_FALSE(Log::verbose());
}

TEST_F(LogTest, DiagWritesNothingToStandardOutputUnlessVerbose) {
  Log::diag("quiet");
  EXPECT_EQ(fakes.console.output, "");
  EXPECT_EQ(fakes.log.lines(), std::vector<std::string>{"info: quiet"});
}

TEST_F(LogTest, VerboseDiagWritesTheMessageAndOneLineFeedAndStillLogs) {
  Log::setVerbose(true);
  Log::diag("loud");
  EXPECT_EQ(fakes.console.output, "loud\n");
  EXPECT_EQ(fakes.console.error, "");
  EXPECT_EQ(fakes.log.lines(), std::vector<std::string>{"info: loud"});
}

TEST_F(LogTest, VerboseDiagWritesEvenWhenTheTypeIsDisabled) {
  fakes.log.disable(LogType::info);
  Log::setVerbose(true);
  Log::diag("loud");
  EXPECT_EQ(fakes.console.output, "loud\n");
  EXPECT_TRUE(fakes.log.records().empty());
}

TEST_F(LogTest, LogsAnEmptyMessageAndDiagPrintsAnEmptyLine) {
  Log::setVerbose(true);
  Log::info("");
  Log::diag("");
  EXPECT_EQ(fakes.log.lines(), (std::vector<std::string>{"info: ", "info: "}));
  EXPECT_EQ(fakes.console.output, "\n");
}

TEST_F(LogTest, TakesPercentSignsLiterally) {
  Log::setVerbose(true);
  Log::info("100% of %s and %n");
  Log::diag("%d%%");
  EXPECT_EQ(fakes.log.lines(), (std::vector<std::string>{"info: 100% of %s and %n", "info: %d%%"}));
  EXPECT_EQ(fakes.console.output, "%d%%\n");
}

TEST_F(LogTest, EmitsNothingOfADisabledType) {
  fakes.log.disable(LogType::info);
  Log::info("unwanted");
  Log::error("wanted");
  EXPECT_EQ(fakes.log.lines(), std::vector<std::string>{"error: wanted"});
}

TEST_F(LogTest, TakesMessagesFromAnyThread) {
  std::thread other([] {
    for (int times = 0; times < 100; ++times)
      Log::error("from the queue");
  });
  for (int times = 0; times < 100; ++times)
    Log::info("from the main thread");
  other.join();
  EXPECT_EQ(fakes.log.records().size(), 200U);
  EXPECT_EQ(fakes.calls->count("log from the queue"), 100U);
}

TEST_F(LogTest, FollowsTheInstalledPorts) {
  Log::info("outer");
  {
    FakePorts inner;
    Log::info("inner");
    EXPECT_EQ(inner.log.lines(), std::vector<std::string>{"info: inner"});
  }
  Log::info("outer again");
  EXPECT_EQ(fakes.log.lines(), (std::vector<std::string>{"info: outer", "info: outer again"}));
}

TEST(Log, WritesNothingAndSurvivesWithoutPorts) {
  Log::setVerbose(true);
  Log::info("to nobody");
  Log::diag("to nobody");
  Log::setVerbose(false);
  FakePorts fakes;
  Log::info("to somebody");
  EXPECT_EQ(fakes.log.lines(), std::vector<std::string>{"info: to somebody"});
}

}  // namespace
}  // namespace tidewell

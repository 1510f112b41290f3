#include "Tidewell/NetworkSampler.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "Tests/Fakes/FakePorts.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

class NetworkSamplerTest : public testing::Test {
 protected:
  /// Lets one run of the tool begin and end.
  void runTool() {
    sampler->refresh();
    fakes.queues.runAll();
  }

  FakePorts fakes;
  FakeTaskLauncher::Script& script = fakes.networkTool.script;
  std::unique_ptr<NetworkSampler> sampler =
      std::make_unique<NetworkSampler>(fakes.networkTool, fakes.queues, fakes.clock);
};

TEST_F(NetworkSamplerTest, HasNoTotalsBeforeTheFirstRunCompletes) {
  script.output = "Safari.123,456,789,\n";
  EXPECT_EQ(sampler->currentTotals(), NetworkTotals{});
  sampler->refresh();
  EXPECT_EQ(sampler->currentTotals(), NetworkTotals{});
  fakes.queues.runAll();
  EXPECT_EQ(sampler->currentTotals(), (NetworkTotals{{123, 1245}}));
}

TEST_F(NetworkSamplerTest, RunsTheToolOnItsOwnQueue) {
  EXPECT_EQ(fakes.queues.labels, Texts{"com.staylit.nettop"});
  EXPECT_EQ(fakes.queues.waiting(), 0U);
  sampler->refresh();
  EXPECT_EQ(fakes.networkTool.launches, 0) << "refreshing returns before the tool runs";
  EXPECT_EQ(fakes.queues.waiting(), 1U);
}

TEST_F(NetworkSamplerTest, RunsExactlyThisCommand) {
  runTool();
  ASSERT_EQ(fakes.networkTool.tasks.size(), 1U);
  EXPECT_EQ(fakes.networkTool.tasks[0]->executable, "/usr/bin/nettop");
  EXPECT_EQ(fakes.networkTool.tasks[0]->arguments,
            (Texts{"-P", "-L", "1", "-x", "-J", "bytes_in,bytes_out"}));
}

TEST_F(NetworkSamplerTest, DropsARefreshWhileARunIsScheduled) {
  sampler->refresh();
  sampler->refresh();
  sampler->refresh();
  EXPECT_EQ(fakes.queues.waiting(), 1U);
  fakes.queues.runAll();
  EXPECT_EQ(fakes.networkTool.launches, 1);
}

TEST_F(NetworkSamplerTest, DropsARefreshWhileTheToolRuns) {
  script.whileReading = [this] { sampler->refresh(); };
  runTool();
  EXPECT_EQ(fakes.networkTool.launches, 1);
  EXPECT_EQ(fakes.queues.waiting(), 0U) << "it is dropped, not queued";
}

TEST_F(NetworkSamplerTest, RunsAgainOnceTheRunIsOver) {
  runTool();
  runTool();
  EXPECT_EQ(fakes.networkTool.launches, 2);
}

TEST_F(NetworkSamplerTest, AnswersWithTheTotalsOfBeforeWhileTheToolRuns) {
  script.output = "a.1,10,0,\n";
  runTool();
  NetworkTotals seen;
  script.output = "a.1,20,0,\n";
  script.whileReading = [&] { seen = sampler->currentTotals(); };
  runTool();
  EXPECT_EQ(seen, (NetworkTotals{{1, 10}}));
  EXPECT_EQ(sampler->currentTotals(), (NetworkTotals{{1, 20}}));
}

TEST_F(NetworkSamplerTest, ReplacesTheTotalsAsAWhole) {
  script.output = "a.1,10,0,\nb.2,20,0,\n";
  runTool();
  script.output = "b.2,30,0,\n";
  runTool();
  EXPECT_EQ(sampler->currentTotals(), (NetworkTotals{{2, 30}}));
}

TEST_F(NetworkSamplerTest, ASuccessfulRunWithoutLinesEmptiesTheTotals) {
  script.output = "a.1,10,0,\n";
  runTool();
  script.output = "";
  runTool();
  EXPECT_EQ(sampler->currentTotals(), NetworkTotals{});
}

TEST_F(NetworkSamplerTest, AFailedLaunchIsLoggedOnceAndLeavesTheEarlierTotals) {
  script.output = "a.1,10,0,\n";
  runTool();
  script.launchError = "The file doesn\u2019t exist.";
  runTool();
  EXPECT_EQ(sampler->currentTotals(), (NetworkTotals{{1, 10}}));
  EXPECT_EQ(fakes.log.lines(),
            Texts{"error: nettop failed to launch: The file doesn\u2019t exist."});
}

TEST_F(NetworkSamplerTest, TriesAgainAfterAFailedLaunch) {
  script.launchError = "no";
  runTool();
  script.launchError = "";
  script.output = "a.1,10,0,\n";
  runTool();
  EXPECT_EQ(fakes.networkTool.launches, 2);
  EXPECT_EQ(sampler->currentTotals(), (NetworkTotals{{1, 10}}));
}

TEST_F(NetworkSamplerTest, IgnoresOutputThatIsNotUTF8Silently) {
  script.output = "a.1,10,0,\n";
  runTool();
  script.output = "a.1,20,0,\n\xFF";
  runTool();
  EXPECT_EQ(sampler->currentTotals(), (NetworkTotals{{1, 10}}));
  EXPECT_TRUE(fakes.log.lines().empty());
  script.output = "a.1,30,0,\n";
  runTool();
  EXPECT_EQ(sampler->currentTotals(), (NetworkTotals{{1, 30}}));
}

TEST_F(NetworkSamplerTest, IgnoresOutputBeyondItsLimitSilentlyAndStopsTheTool) {
  script.output = "a.1,10,0,\n";
  runTool();
  script.exceedsLimit = true;
  script.seenRunning = FakeTaskLauncher::kRunsUntilTerminated;
  runTool();
  EXPECT_EQ(fakes.networkTool.tasks[1]->readLimits, std::vector<std::size_t>{67'108'864});
  EXPECT_GE(fakes.networkTool.tasks[1]->terminations, 1);
  EXPECT_EQ(sampler->currentTotals(), (NetworkTotals{{1, 10}}));
  EXPECT_TRUE(fakes.log.lines().empty());
}

TEST_F(NetworkSamplerTest, DoesNotWaitForAToolThatEndsWithItsOutput) {
  runTool();
  EXPECT_TRUE(fakes.clock.sleeps.empty());
  EXPECT_EQ(fakes.networkTool.tasks[0]->terminations, 0);
}

TEST_F(NetworkSamplerTest, LooksEvery50MillisecondsAtAToolThatRunsOn) {
  script.seenRunning = 3;
  script.output = "a.1,10,0,\n";
  runTool();
  EXPECT_EQ(fakes.clock.sleeps, (std::vector<Seconds>{50ms, 50ms, 50ms}));
  EXPECT_EQ(fakes.networkTool.tasks[0]->terminations, 0);
  EXPECT_EQ(sampler->currentTotals(), (NetworkTotals{{1, 10}}));
}

TEST_F(NetworkSamplerTest, TerminatesAfter8SecondsAToolThatHangsAndUsesItsOutput) {
  script.seenRunning = FakeTaskLauncher::kRunsUntilTerminated;
  script.output = "a.1,10,0,\n";
  const Moment begin = fakes.clock.now();
  runTool();
  EXPECT_EQ(fakes.networkTool.tasks[0]->terminations, 1);
  EXPECT_EQ(fakes.clock.now() - begin, 8s);
  EXPECT_EQ(fakes.clock.sleeps, std::vector<Seconds>(160, 50ms));
  EXPECT_EQ(sampler->currentTotals(), (NetworkTotals{{1, 10}}));
  EXPECT_TRUE(fakes.log.lines().empty());
}

TEST_F(NetworkSamplerTest, CountsThe8SecondsFromTheEndOfTheOutput) {
  script.seenRunning = FakeTaskLauncher::kRunsUntilTerminated;
  script.whileReading = [this] { fakes.clock.advance(60s); };
  runTool();
  EXPECT_EQ(fakes.clock.sleeps.size(), 160U);
}

TEST_F(NetworkSamplerTest, LetsGoOfTheToolWhenTheRunIsOver) {
  runTool();
  EXPECT_FALSE(fakes.networkTool.tasks[0]->alive);
}

TEST_F(NetworkSamplerTest, ARunThatIsScheduledFindsNothingWhenTheSamplerIsGone) {
  // The queue drops what has not begun; this is the work that begins just then.
  fakes.queues.keepWorkOfDestroyedQueues();
  sampler->refresh();
  sampler.reset();
  ASSERT_EQ(fakes.queues.waiting(), 1U);
  fakes.queues.runAll();
  EXPECT_EQ(fakes.networkTool.launches, 0);
}

TEST_F(NetworkSamplerTest, TakesItsQueueWithIt) {
  sampler->refresh();
  sampler.reset();
  EXPECT_EQ(fakes.queues.waiting(), 0U);
}

TEST_F(NetworkSamplerTest, TerminatesTheToolWhenItIsDestroyedWhileTheToolRuns) {
  int terminationsAtOnce = 0;
  script.whileReading = [&] {
    sampler.reset();
    terminationsAtOnce = fakes.networkTool.tasks[0]->terminations;
  };
  runTool();
  EXPECT_EQ(terminationsAtOnce, 1);
  EXPECT_FALSE(fakes.networkTool.tasks[0]->alive);
}

TEST_F(NetworkSamplerTest, StopsWaitingForAToolThatIgnoresItsEndWhenItIsDestroyed) {
  script.seenRunning = FakeTaskLauncher::kRunsUntilTerminated;
  script.ignoresTermination = true;
  fakes.clock.whileSleeping = [this] { sampler.reset(); };
  runTool();
  EXPECT_EQ(fakes.clock.sleeps, std::vector<Seconds>{50ms});
  EXPECT_FALSE(fakes.networkTool.tasks[0]->alive);
}

// The lines.

TEST(NetworkSamplerParse, SumsBytesInAndBytesOut) {
  EXPECT_EQ(NetworkSampler::parse("Safari.123,456,789,"), (NetworkTotals{{123, 1245}}));
}

TEST(NetworkSamplerParse, TakesTheIdentifierBehindTheLastDot) {
  EXPECT_EQ(NetworkSampler::parse("com.apple.WebKit.Networking.4567,10,20,"),
            (NetworkTotals{{4567, 30}}));
}

TEST(NetworkSamplerParse, KeepsTheKernelsIdentifier0) {
  EXPECT_EQ(NetworkSampler::parse("kernel_task.0,1,2,"), (NetworkTotals{{0, 3}}));
}

TEST(NetworkSamplerParse, AcceptsBlanksAroundTheBytes) {
  EXPECT_EQ(NetworkSampler::parse("a.1, 10 ,\t20\t,"), (NetworkTotals{{1, 30}}));
}

TEST(NetworkSamplerParse, SkipsABlankBeforeTheIdentifier) {
  EXPECT_EQ(NetworkSampler::parse("a. 1,10,20,"), NetworkTotals{});
  EXPECT_EQ(NetworkSampler::parse("a.1 ,10,20,"), NetworkTotals{});
}

TEST(NetworkSamplerParse, DoesNotTrimTheProcessColumn) {
  EXPECT_EQ(NetworkSampler::parse("  my tool.1,10,20,"), (NetworkTotals{{1, 30}}));
}

TEST(NetworkSamplerParse, SkipsAFirstFieldWithoutADot) {
  EXPECT_EQ(NetworkSampler::parse("process,10,20,"), NetworkTotals{});
}

TEST(NetworkSamplerParse, SkipsAFirstFieldThatEndsWithItsDot) {
  EXPECT_EQ(NetworkSampler::parse("process.,10,20,"), NetworkTotals{});
}

TEST(NetworkSamplerParse, SkipsAnIdentifierWithANonDigit) {
  EXPECT_EQ(NetworkSampler::parse("a.1x,10,20,"), NetworkTotals{});
  EXPECT_EQ(NetworkSampler::parse("a.0x1F,10,20,"), NetworkTotals{});
  EXPECT_EQ(NetworkSampler::parse("a.-,10,20,"), NetworkTotals{});
  EXPECT_EQ(NetworkSampler::parse("a.+,10,20,"), NetworkTotals{});
  EXPECT_EQ(NetworkSampler::parse("a.+-1,10,20,"), NetworkTotals{});
}

TEST(NetworkSamplerParse, AcceptsASignBeforeTheIdentifier) {
  EXPECT_EQ(NetworkSampler::parse("a.+7,10,20,"), (NetworkTotals{{7, 30}}));
  EXPECT_EQ(NetworkSampler::parse("a.-7,10,20,"), (NetworkTotals{{-7, 30}}));
}

TEST(NetworkSamplerParse, SkipsAnIdentifierBeyond32Bits) {
  EXPECT_EQ(NetworkSampler::parse("a.2147483647,1,0,"), (NetworkTotals{{2147483647, 1}}));
  EXPECT_EQ(NetworkSampler::parse("a.2147483648,1,0,"), NetworkTotals{});
  EXPECT_EQ(NetworkSampler::parse("a.-2147483649,1,0,"), NetworkTotals{});
}

TEST(NetworkSamplerParse, SkipsEmptyBytesIn) {
  EXPECT_EQ(NetworkSampler::parse("a.1,,20,"), NetworkTotals{});
  EXPECT_EQ(NetworkSampler::parse("a.1, ,20,"), NetworkTotals{});
}

TEST(NetworkSamplerParse, SkipsEmptyBytesOut) {
  EXPECT_EQ(NetworkSampler::parse("a.1,20,,"), NetworkTotals{});
  EXPECT_EQ(NetworkSampler::parse("a.1,20,"), NetworkTotals{});
}

TEST(NetworkSamplerParse, SkipsALineWithOnlyTwoFields) {
  EXPECT_EQ(NetworkSampler::parse("a.1,20"), NetworkTotals{});
  EXPECT_EQ(NetworkSampler::parse("a.1"), NetworkTotals{});
}

TEST(NetworkSamplerParse, AcceptsALineWithoutATrailingComma) {
  EXPECT_EQ(NetworkSampler::parse("a.1,10,20"), (NetworkTotals{{1, 30}}));
}

TEST(NetworkSamplerParse, IgnoresFieldsBehindTheThird) {
  EXPECT_EQ(NetworkSampler::parse("a.1,10,20,x,,-5"), (NetworkTotals{{1, 30}}));
}

TEST(NetworkSamplerParse, SkipsBytesThatAreNoWholeNumber) {
  EXPECT_EQ(NetworkSampler::parse("a.1,1.5,20,"), NetworkTotals{});
  EXPECT_EQ(NetworkSampler::parse("a.1,-5,20,"), NetworkTotals{});
  EXPECT_EQ(NetworkSampler::parse("a.1,10,twenty,"), NetworkTotals{});
  EXPECT_EQ(NetworkSampler::parse("a.1,1 0,20,"), NetworkTotals{});
}

TEST(NetworkSamplerParse, AcceptsASignBeforeTheBytes) {
  EXPECT_EQ(NetworkSampler::parse("a.1,+10,-0,"), (NetworkTotals{{1, 10}}));
}

TEST(NetworkSamplerParse, SkipsBytesBeyond64Bits) {
  EXPECT_EQ(NetworkSampler::parse("a.1,18446744073709551615,0,"),
            (NetworkTotals{{1, 18446744073709551615U}}));
  EXPECT_EQ(NetworkSampler::parse("a.1,18446744073709551616,0,"), NetworkTotals{});
}

TEST(NetworkSamplerParse, SumsTwoLinesOfOneProcess) {
  EXPECT_EQ(NetworkSampler::parse("a.123,4,6,\na.123,15,5,\n"), (NetworkTotals{{123, 30}}));
}

TEST(NetworkSamplerParse, SkipsBadLinesOneByOne) {
  EXPECT_EQ(NetworkSampler::parse("time,,bytes_in,bytes_out,\n"
                                  "\n"
                                  "a.1,1,0,\n"
                                  "nonsense\n"
                                  "b.2,2,0,\n"
                                  "c.3,3,0,"),
            (NetworkTotals{{1, 1}, {2, 2}, {3, 3}}));
}

TEST(NetworkSamplerParse, SplitsLinesAtLineFeedsOnly) {
  EXPECT_EQ(NetworkSampler::parse("a.1,10,20,\r\nb.2,1,2,\r\n"), (NetworkTotals{{1, 30}, {2, 3}}));
  EXPECT_EQ(NetworkSampler::parse("a.1,10,20\r\n"), NetworkTotals{}) << "a return is no blank";
}

TEST(NetworkSamplerParse, FindsNothingInNothing) {
  EXPECT_EQ(NetworkSampler::parse(""), NetworkTotals{});
  EXPECT_EQ(NetworkSampler::parse("\n\n"), NetworkTotals{});
}

TEST(NetworkSamplerParseDeathTest, EndsTheProcessWhenALineOverflows) {
  EXPECT_DEATH(NetworkSampler::parse("a.1,18446744073709551615,1,"),
               "fatal error: arithmetic overflow in an addition");
}

TEST(NetworkSamplerParseDeathTest, EndsTheProcessWhenTheSumOfTwoLinesOverflows) {
  EXPECT_DEATH(NetworkSampler::parse("a.1,18446744073709551615,0,\na.1,1,0,"),
               "fatal error: arithmetic overflow in an addition");
}

}  // namespace
}  // namespace tidewell

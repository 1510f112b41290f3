#include "Platform/MacOS/Network/NettopMeter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "Tests/Fakes/FakePorts.h"
#include "Tidewell/NetworkSampler.h"

namespace platform {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

/// The meter below a sampler, over a launcher that launches nothing.
class NettopMeterTest : public ::testing::Test {
 protected:
  /// Lets one run of the tool begin and end.
  void runTool() {
    sampler->refresh();
    fakes.queues.runAll();
  }

  tidewell::FakePorts fakes;
  tidewell::FakeTaskLauncher::Script& script = fakes.tasks.script;
  NettopMeter meter{fakes.tasks, fakes.clock};
  std::unique_ptr<tidewell::NetworkSampler> sampler =
      std::make_unique<tidewell::NetworkSampler>(meter, fakes.queues);
};

TEST_F(NettopMeterTest, RunsExactlyThisCommand) {
  runTool();
  ASSERT_EQ(fakes.tasks.tasks.size(), 1U);
  EXPECT_EQ(fakes.tasks.tasks[0]->executable, "/usr/bin/nettop");
  EXPECT_EQ(fakes.tasks.tasks[0]->arguments,
            (Texts{"-P", "-L", "1", "-x", "-J", "bytes_in,bytes_out"}));
}

TEST_F(NettopMeterTest, IgnoresOutputThatIsNotUTF8Silently) {
  script.output = "a.1,10,0,\n";
  runTool();
  script.output = "a.1,20,0,\n\xFF";
  runTool();
  EXPECT_EQ(sampler->currentTotals(), (tidewell::NetworkTotals{{1, 10}}));
  EXPECT_TRUE(fakes.log.lines().empty());
  script.output = "a.1,30,0,\n";
  runTool();
  EXPECT_EQ(sampler->currentTotals(), (tidewell::NetworkTotals{{1, 30}}));
}

TEST_F(NettopMeterTest, IgnoresOutputBeyondItsLimitSilentlyAndStopsTheTool) {
  script.output = "a.1,10,0,\n";
  runTool();
  script.exceedsLimit = true;
  script.seenRunning = tidewell::FakeTaskLauncher::kRunsUntilTerminated;
  runTool();
  EXPECT_EQ(fakes.tasks.tasks[1]->readLimits, std::vector<std::size_t>{67'108'864});
  EXPECT_GE(fakes.tasks.tasks[1]->terminations, 1);
  EXPECT_EQ(sampler->currentTotals(), (tidewell::NetworkTotals{{1, 10}}));
  EXPECT_TRUE(fakes.log.lines().empty());
}

TEST_F(NettopMeterTest, DoesNotWaitForAToolThatEndsWithItsOutput) {
  runTool();
  EXPECT_TRUE(fakes.clock.sleeps.empty());
  EXPECT_EQ(fakes.tasks.tasks[0]->terminations, 0);
}

TEST_F(NettopMeterTest, LooksEvery50MillisecondsAtAToolThatRunsOn) {
  script.seenRunning = 3;
  script.output = "a.1,10,0,\n";
  runTool();
  EXPECT_EQ(fakes.clock.sleeps, (std::vector<tidewell::Seconds>{50ms, 50ms, 50ms}));
  EXPECT_EQ(fakes.tasks.tasks[0]->terminations, 0);
  EXPECT_EQ(sampler->currentTotals(), (tidewell::NetworkTotals{{1, 10}}));
}

TEST_F(NettopMeterTest, TerminatesAfter8SecondsAToolThatHangsAndUsesItsOutput) {
  script.seenRunning = tidewell::FakeTaskLauncher::kRunsUntilTerminated;
  script.output = "a.1,10,0,\n";
  const tidewell::Moment begin = fakes.clock.now();
  runTool();
  EXPECT_EQ(fakes.tasks.tasks[0]->terminations, 1);
  EXPECT_EQ(fakes.clock.now() - begin, 8s);
  EXPECT_EQ(fakes.clock.sleeps, std::vector<tidewell::Seconds>(160, 50ms));
  EXPECT_EQ(sampler->currentTotals(), (tidewell::NetworkTotals{{1, 10}}));
  EXPECT_TRUE(fakes.log.lines().empty());
}

TEST_F(NettopMeterTest, CountsThe8SecondsFromTheEndOfTheOutput) {
  script.seenRunning = tidewell::FakeTaskLauncher::kRunsUntilTerminated;
  script.whileReading = [this] { fakes.clock.advance(60s); };
  runTool();
  EXPECT_EQ(fakes.clock.sleeps.size(), 160U);
}

TEST_F(NettopMeterTest, LetsGoOfTheToolWhenTheRunIsOver) {
  runTool();
  EXPECT_FALSE(fakes.tasks.tasks[0]->alive);
}

TEST_F(NettopMeterTest, TerminatesTheToolWhenItIsDestroyedWhileTheToolRuns) {
  int terminationsAtOnce = 0;
  script.whileReading = [&] {
    sampler.reset();
    terminationsAtOnce = fakes.tasks.tasks[0]->terminations;
  };
  runTool();
  EXPECT_EQ(terminationsAtOnce, 1);
  EXPECT_FALSE(fakes.tasks.tasks[0]->alive);
}

TEST_F(NettopMeterTest, StopsWaitingForAToolThatIgnoresItsEndWhenItIsDestroyed) {
  script.seenRunning = tidewell::FakeTaskLauncher::kRunsUntilTerminated;
  script.ignoresTermination = true;
  fakes.clock.whileSleeping = [this] { sampler.reset(); };
  runTool();
  EXPECT_EQ(fakes.clock.sleeps, std::vector<tidewell::Seconds>{50ms});
  EXPECT_FALSE(fakes.tasks.tasks[0]->alive);
}

TEST_F(NettopMeterTest, TellsInTheLaunchersWordsWhyTheToolCannotBeLaunched) {
  script.launchError = "The file doesn\u2019t exist.";
  tidewell::Cancellation cancellation;
  const tidewell::NetworkMeasurement measurement = meter.measure(cancellation);
  EXPECT_EQ(measurement.totals, std::nullopt);
  EXPECT_EQ(measurement.error, "The file doesn\u2019t exist.");
}

TEST_F(NettopMeterTest, ReadsNothingOfAToolThatNobodyWaitsForAnyMore) {
  tidewell::Cancellation cancellation;
  cancellation.cancel();
  EXPECT_EQ(meter.measure(cancellation).totals, std::nullopt);
  EXPECT_TRUE(fakes.tasks.tasks.at(0)->readLimits.empty());
  EXPECT_FALSE(fakes.tasks.tasks.at(0)->alive);
}

// The lines.

TEST(NettopMeterParse, SumsBytesInAndBytesOut) {
  EXPECT_EQ(NettopMeter::parse("Safari.123,456,789,"), (tidewell::NetworkTotals{{123, 1245}}));
}

TEST(NettopMeterParse, TakesTheIdentifierBehindTheLastDot) {
  EXPECT_EQ(NettopMeter::parse("com.apple.WebKit.Networking.4567,10,20,"),
            (tidewell::NetworkTotals{{4567, 30}}));
}

TEST(NettopMeterParse, KeepsTheKernelsIdentifier0) {
  EXPECT_EQ(NettopMeter::parse("kernel_task.0,1,2,"), (tidewell::NetworkTotals{{0, 3}}));
}

TEST(NettopMeterParse, AcceptsBlanksAroundTheBytes) {
  EXPECT_EQ(NettopMeter::parse("a.1, 10 ,\t20\t,"), (tidewell::NetworkTotals{{1, 30}}));
}

TEST(NettopMeterParse, SkipsABlankBeforeTheIdentifier) {
  EXPECT_EQ(NettopMeter::parse("a. 1,10,20,"), tidewell::NetworkTotals{});
  EXPECT_EQ(NettopMeter::parse("a.1 ,10,20,"), tidewell::NetworkTotals{});
}

TEST(NettopMeterParse, DoesNotTrimTheProcessColumn) {
  EXPECT_EQ(NettopMeter::parse("  my tool.1,10,20,"), (tidewell::NetworkTotals{{1, 30}}));
}

TEST(NettopMeterParse, SkipsAFirstFieldWithoutADot) {
  EXPECT_EQ(NettopMeter::parse("process,10,20,"), tidewell::NetworkTotals{});
}

TEST(NettopMeterParse, SkipsAFirstFieldThatEndsWithItsDot) {
  EXPECT_EQ(NettopMeter::parse("process.,10,20,"), tidewell::NetworkTotals{});
}

TEST(NettopMeterParse, SkipsAnIdentifierWithANonDigit) {
  EXPECT_EQ(NettopMeter::parse("a.1x,10,20,"), tidewell::NetworkTotals{});
  EXPECT_EQ(NettopMeter::parse("a.0x1F,10,20,"), tidewell::NetworkTotals{});
  EXPECT_EQ(NettopMeter::parse("a.-,10,20,"), tidewell::NetworkTotals{});
  EXPECT_EQ(NettopMeter::parse("a.+,10,20,"), tidewell::NetworkTotals{});
  EXPECT_EQ(NettopMeter::parse("a.+-1,10,20,"), tidewell::NetworkTotals{});
}

TEST(NettopMeterParse, AcceptsASignBeforeTheIdentifier) {
  EXPECT_EQ(NettopMeter::parse("a.+7,10,20,"), (tidewell::NetworkTotals{{7, 30}}));
  EXPECT_EQ(NettopMeter::parse("a.-7,10,20,"), (tidewell::NetworkTotals{{-7, 30}}));
}

TEST(NettopMeterParse, SkipsAnIdentifierBeyond32Bits) {
  EXPECT_EQ(NettopMeter::parse("a.2147483647,1,0,"), (tidewell::NetworkTotals{{2147483647, 1}}));
  EXPECT_EQ(NettopMeter::parse("a.2147483648,1,0,"), tidewell::NetworkTotals{});
  EXPECT_EQ(NettopMeter::parse("a.-2147483649,1,0,"), tidewell::NetworkTotals{});
}

TEST(NettopMeterParse, SkipsEmptyBytesIn) {
  EXPECT_EQ(NettopMeter::parse("a.1,,20,"), tidewell::NetworkTotals{});
  EXPECT_EQ(NettopMeter::parse("a.1, ,20,"), tidewell::NetworkTotals{});
}

TEST(NettopMeterParse, SkipsEmptyBytesOut) {
  EXPECT_EQ(NettopMeter::parse("a.1,20,,"), tidewell::NetworkTotals{});
  EXPECT_EQ(NettopMeter::parse("a.1,20,"), tidewell::NetworkTotals{});
}

TEST(NettopMeterParse, SkipsALineWithOnlyTwoFields) {
  EXPECT_EQ(NettopMeter::parse("a.1,20"), tidewell::NetworkTotals{});
  EXPECT_EQ(NettopMeter::parse("a.1"), tidewell::NetworkTotals{});
}

TEST(NettopMeterParse, AcceptsALineWithoutATrailingComma) {
  EXPECT_EQ(NettopMeter::parse("a.1,10,20"), (tidewell::NetworkTotals{{1, 30}}));
}

TEST(NettopMeterParse, IgnoresFieldsBehindTheThird) {
  EXPECT_EQ(NettopMeter::parse("a.1,10,20,x,,-5"), (tidewell::NetworkTotals{{1, 30}}));
}

TEST(NettopMeterParse, SkipsBytesThatAreNoWholeNumber) {
  EXPECT_EQ(NettopMeter::parse("a.1,1.5,20,"), tidewell::NetworkTotals{});
  EXPECT_EQ(NettopMeter::parse("a.1,-5,20,"), tidewell::NetworkTotals{});
  EXPECT_EQ(NettopMeter::parse("a.1,10,twenty,"), tidewell::NetworkTotals{});
  EXPECT_EQ(NettopMeter::parse("a.1,1 0,20,"), tidewell::NetworkTotals{});
}

TEST(NettopMeterParse, AcceptsASignBeforeTheBytes) {
  EXPECT_EQ(NettopMeter::parse("a.1,+10,-0,"), (tidewell::NetworkTotals{{1, 10}}));
}

TEST(NettopMeterParse, SkipsBytesBeyond64Bits) {
  EXPECT_EQ(NettopMeter::parse("a.1,18446744073709551615,0,"),
            (tidewell::NetworkTotals{{1, 18446744073709551615U}}));
  EXPECT_EQ(NettopMeter::parse("a.1,18446744073709551616,0,"), tidewell::NetworkTotals{});
}

TEST(NettopMeterParse, SumsTwoLinesOfOneProcess) {
  EXPECT_EQ(NettopMeter::parse("a.123,4,6,\na.123,15,5,\n"), (tidewell::NetworkTotals{{123, 30}}));
}

TEST(NettopMeterParse, SkipsBadLinesOneByOne) {
  EXPECT_EQ(NettopMeter::parse("time,,bytes_in,bytes_out,\n"
                               "\n"
                               "a.1,1,0,\n"
                               "nonsense\n"
                               "b.2,2,0,\n"
                               "c.3,3,0,"),
            (tidewell::NetworkTotals{{1, 1}, {2, 2}, {3, 3}}));
}

TEST(NettopMeterParse, SplitsLinesAtLineFeedsOnly) {
  EXPECT_EQ(NettopMeter::parse("a.1,10,20,\r\nb.2,1,2,\r\n"),
            (tidewell::NetworkTotals{{1, 30}, {2, 3}}));
  EXPECT_EQ(NettopMeter::parse("a.1,10,20\r\n"), tidewell::NetworkTotals{})
      << "a return is no blank";
}

TEST(NettopMeterParse, FindsNothingInNothing) {
  EXPECT_EQ(NettopMeter::parse(""), tidewell::NetworkTotals{});
  EXPECT_EQ(NettopMeter::parse("\n\n"), tidewell::NetworkTotals{});
}

TEST(NettopMeterParseDeathTest, EndsTheProcessWhenALineOverflows) {
  EXPECT_DEATH(NettopMeter::parse("a.1,18446744073709551615,1,"),
               "fatal error: arithmetic overflow in an addition");
}

TEST(NettopMeterParseDeathTest, EndsTheProcessWhenTheSumOfTwoLinesOverflows) {
  EXPECT_DEATH(NettopMeter::parse("a.1,18446744073709551615,0,\na.1,1,0,"),
               "fatal error: arithmetic overflow in an addition");
}

}  // namespace
}  // namespace platform

#include "Tidewell/ProcessSampler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "Tests/Fakes/ComposedPorts.h"

namespace tidewell {
namespace {

using Pids = std::vector<std::int32_t>;

constexpr std::uint64_t kLargestCounter = 18446744073709551615U;

/// A sampler over fakes, with or without what the program puts in between.
class SampledPorts : public testing::Test {
 protected:
  explicit SampledPorts(Composition composition) : fakes(composition) {}

  Pids sampledPids() {
    Pids pids;
    for (const RawSample& sample : sampler.sample())
      pids.push_back(sample.pid);
    return pids;
  }

  /// The name of a process whose program lies at `path`.
  std::string nameFor(const std::string& path) {
    processes.rows.clear();
    processes.add(10, path);
    const std::vector<RawSample>& snapshot = sampler.sample();
    return snapshot.empty() ? "left out" : std::string(snapshot.front().executable);
  }

  ComposedPorts fakes;
  FakeProcessTable& processes = fakes.processes;
  FakeRunningApplications& applications = fakes.applications;
  ProcessSampler sampler{*fakes.ports.processTable};
};

/// What the sampler asks of its table, seen where nothing stands in between.
class ProcessSamplerAlone : public SampledPorts {
 protected:
  ProcessSamplerAlone() : SampledPorts(Composition::bare) {}
};

class ProcessSamplerTest : public SampledPorts, public testing::WithParamInterface<Composition> {
 protected:
  ProcessSamplerTest() : SampledPorts(GetParam()) {}
};

INSTANTIATE_TEST_SUITE_P(Over, ProcessSamplerTest,
                         testing::Values(Composition::bare, Composition::shipped),
                         [](const auto& composition) {
                           return composition.param == Composition::bare ? "ThePlainTable"
                                                                         : "TheTableThatShips";
                         });

TEST_P(ProcessSamplerTest, FillsEveryFieldOfAnApplicationsProcess) {
  processes.add(10, "/Applications/Film.app/Contents/MacOS/film-bin").usage = {30, 12, 1000, 24};
  applications.add(10, "com.example.film", "Film Maker");
  const std::vector<RawSample>& snapshot = sampler.sample();
  ASSERT_EQ(snapshot.size(), 1U);
  EXPECT_EQ(snapshot[0].pid, 10);
  EXPECT_EQ(snapshot[0].executable, "Film");
  EXPECT_EQ(snapshot[0].bundleID, "com.example.film");
  EXPECT_EQ(snapshot[0].displayName, "Film Maker");
  EXPECT_EQ(snapshot[0].cpuNanos, 42U);
  EXPECT_EQ(snapshot[0].diskBytes, 1024U);
}

TEST_P(ProcessSamplerTest, FillsABackgroundProcessFromItsPathAlone) {
  processes.add(10, "/usr/sbin/bar");
  applications.add(11, "com.example.other", "Other");
  const std::vector<RawSample>& snapshot = sampler.sample();
  ASSERT_EQ(snapshot.size(), 1U);
  EXPECT_EQ(snapshot[0].executable, "bar");
  EXPECT_EQ(snapshot[0].bundleID, std::nullopt);
  EXPECT_EQ(snapshot[0].displayName, "bar");
}

// The list of processes.

TEST_P(ProcessSamplerTest, AnEmptyListGivesAnEmptySnapshotWithoutTouchingTheCounters) {
  processes.add(10, "/bin/a");
  processes.bytesNeeded = 0;
  EXPECT_TRUE(sampler.sample().empty());
  processes.bytesNeeded = -1;
  EXPECT_TRUE(sampler.sample().empty());
  EXPECT_TRUE(processes.bufferLengths.empty());
  EXPECT_TRUE(processes.usageAsked.empty());
}

TEST_P(ProcessSamplerTest, AFailedSecondListingGivesAnEmptySnapshotWithoutTouchingTheCounters) {
  processes.add(10, "/bin/a");
  processes.bytesWritten = 0;
  EXPECT_TRUE(sampler.sample().empty());
  processes.bytesWritten = -1;
  EXPECT_TRUE(sampler.sample().empty());
  EXPECT_TRUE(processes.usageAsked.empty());
}

TEST_F(ProcessSamplerAlone, AFailedListingEmptiesTheSnapshotOfBefore) {
  processes.add(10, "/bin/a");
  EXPECT_EQ(sampledPids(), Pids{10});
  processes.bytesNeeded = -1;
  EXPECT_TRUE(sampler.sample().empty());
}

TEST_P(ProcessSamplerTest, DropsTheKernelAndNegativeIdentifiers) {
  processes.add(0, "/kernel");
  processes.add(10, "/bin/a");
  processes.add(-3, "/bin/odd");
  EXPECT_EQ(sampledPids(), Pids{10});
}

TEST_F(ProcessSamplerAlone, AsksNothingAboutTheKernelAndNegativeIdentifiers) {
  processes.add(0, "/kernel");
  processes.add(10, "/bin/a");
  processes.add(-3, "/bin/odd");
  sampler.sample();
  EXPECT_EQ(processes.usageAsked, Pids{10});
}

TEST_P(ProcessSamplerTest, DropsTheZeroPaddingBehindTheList) {
  processes.add(10, "/bin/a");
  processes.add(11, "/bin/b");
  processes.bytesNeeded = 40;
  processes.bytesWritten = 40;
  EXPECT_EQ(sampledPids(), (Pids{10, 11}));
}

TEST_P(ProcessSamplerTest, TakesNoMoreThanTheListSaysItWrote) {
  processes.add(10, "/bin/a");
  processes.add(11, "/bin/b");
  processes.bytesWritten = 7;
  EXPECT_EQ(sampledPids(), Pids{10});
}

TEST_P(ProcessSamplerTest, TakesNoMoreThanItHadRoomFor) {
  processes.add(10, "/bin/a");
  processes.bytesWritten = 4000;
  EXPECT_EQ(sampledPids(), Pids{10});
}

TEST_P(ProcessSamplerTest, LeavesNoSpareRoomForProcessesThatStartMeanwhile) {
  processes.add(10, "/bin/a");
  processes.add(11, "/bin/b");
  processes.bytesNeeded = 7;
  EXPECT_EQ(sampledPids(), Pids{10});
  EXPECT_EQ(processes.bufferLengths, std::vector<std::size_t>{1});
}

TEST_P(ProcessSamplerTest, KeepsTheKernelsOrder) {
  processes.add(30, "/bin/c");
  processes.add(10, "/bin/a");
  processes.add(20, "/bin/b");
  EXPECT_EQ(sampledPids(), (Pids{30, 10, 20}));
}

TEST_P(ProcessSamplerTest, AsksForTheApplicationsBeforeTheProcesses) {
  sampler.sample();
  EXPECT_EQ(fakes.calls->all(), (std::vector<std::string>{"list applications", "list processes"}));
}

// Which processes are left out.

TEST_P(ProcessSamplerTest, SkipsAProcessWhoseCountersAreRefusedWithoutAskingForItsPath) {
  processes.add(10, "/bin/a").readable = false;
  processes.add(11, "/bin/b");
  EXPECT_EQ(sampledPids(), Pids{11});
  EXPECT_EQ(processes.usageAsked, (Pids{10, 11}));
  EXPECT_EQ(processes.pathAsked, Pids{11});
}

TEST_F(ProcessSamplerAlone, ASkippedProcessLeavesNothingBehindInItsNeighbour) {
  processes.add(10, "/bin/a").usage = {7, 0, 7, 0};
  processes.add(11, "/bin/b");
  applications.add(10, "com.a", "A");
  EXPECT_EQ(sampledPids(), (Pids{10, 11}));
  processes.at(10).readable = false;
  const std::vector<RawSample>& snapshot = sampler.sample();
  ASSERT_EQ(snapshot.size(), 1U);
  EXPECT_EQ(snapshot[0].executable, "b");
  EXPECT_EQ(snapshot[0].bundleID, std::nullopt);
  EXPECT_EQ(snapshot[0].displayName, "b");
  EXPECT_EQ(snapshot[0].cpuNanos, 0U);
  EXPECT_EQ(snapshot[0].diskBytes, 0U);
}

TEST_P(ProcessSamplerTest, LeavesOutABackgroundProcessWhosePathCannotBeRead) {
  processes.add(10, std::nullopt);
  EXPECT_TRUE(sampler.sample().empty());
}

TEST_P(ProcessSamplerTest, NamesAnApplicationWhosePathCannotBeReadByItsLocalizedName) {
  processes.add(10, std::nullopt);
  applications.add(10, "com.example.film", "Film Maker");
  const std::vector<RawSample>& snapshot = sampler.sample();
  ASSERT_EQ(snapshot.size(), 1U);
  EXPECT_EQ(snapshot[0].executable, "Film Maker");
  EXPECT_EQ(snapshot[0].displayName, "Film Maker");
  EXPECT_EQ(snapshot[0].bundleID, "com.example.film");
}

TEST_P(ProcessSamplerTest, LeavesOutAnApplicationWithNeitherPathNorName) {
  processes.add(10, std::nullopt);
  applications.add(10, "com.example.film", std::nullopt);
  EXPECT_TRUE(sampler.sample().empty());
}

// Names.

TEST_P(ProcessSamplerTest, NamesAProcessAfterItsBundle) {
  EXPECT_EQ(nameFor("/Applications/Foo Bar.app/Contents/MacOS/foo"), "Foo Bar");
  EXPECT_EQ(nameFor("/x.app/y"), "x");
}

TEST_P(ProcessSamplerTest, NamesAProcessOutsideABundleAfterItsFile) {
  EXPECT_EQ(nameFor("/usr/sbin/bar"), "bar");
  EXPECT_EQ(nameFor("bar"), "bar");
}

TEST_P(ProcessSamplerTest, NamesANestedHelperAfterTheInnermostBundle) {
  EXPECT_EQ(
      nameFor("/Applications/Outer.app/Contents/Frameworks/Inner Helper.app/Contents/MacOS/x"),
      "Inner Helper");
}

TEST_P(ProcessSamplerTest, TakesNothingElseForABundle) {
  EXPECT_EQ(nameFor("/opt/tool.apple/run"), "run");
  EXPECT_EQ(nameFor("/opt/Tool.APP/run"), "run");
  EXPECT_EQ(nameFor("/opt/tool.app"), "tool.app");
}

TEST_P(ProcessSamplerTest, NamesAProcessAfterItsFileWhereTheBundleHasNoName) {
  EXPECT_EQ(nameFor("/.app/y"), "y");
  EXPECT_EQ(nameFor(".app/y"), "y");
}

TEST_P(ProcessSamplerTest, IgnoresEmptyPiecesOfAPath) {
  EXPECT_EQ(nameFor("//opt//Tool.app//x"), "Tool");
  EXPECT_EQ(nameFor("/opt/Outer/.app/x"), "Outer");
  EXPECT_EQ(nameFor("/usr/bin/bar//"), "bar");
}

TEST_P(ProcessSamplerTest, NamesTheRootFolderWithASlash) {
  EXPECT_EQ(nameFor("/"), "/");
  EXPECT_EQ(nameFor("//"), "/");
}

TEST_P(ProcessSamplerTest, ReadsAPathThatFillsTheWholeBuffer) {
  const std::string longName(4000, 'n');
  EXPECT_EQ(nameFor("/opt/" + longName), longName);
}

TEST_P(ProcessSamplerTest, FallsBackToTheExecutableNameForDisplay) {
  processes.add(10, "/opt/bin/film");
  applications.add(10, "com.example.film", std::nullopt);
  const std::vector<RawSample>& snapshot = sampler.sample();
  ASSERT_EQ(snapshot.size(), 1U);
  EXPECT_EQ(snapshot[0].displayName, "film");
  EXPECT_EQ(snapshot[0].bundleID, "com.example.film");
}

TEST_P(ProcessSamplerTest, ShowsAnEmptyLocalizedNameAsItIs) {
  processes.add(10, "/opt/bin/film");
  applications.add(10, "com.example.film", "");
  const std::vector<RawSample>& snapshot = sampler.sample();
  ASSERT_EQ(snapshot.size(), 1U);
  EXPECT_EQ(snapshot[0].executable, "film");
  EXPECT_EQ(snapshot[0].displayName, "");
}

TEST_P(ProcessSamplerTest, LeavesOutAnApplicationWithoutAPathWhoseNameIsEmpty) {
  processes.add(10, std::nullopt);
  applications.add(10, "com.example.film", "");
  EXPECT_TRUE(sampler.sample().empty());
}

// The applications.

TEST_P(ProcessSamplerTest, LetsALaterApplicationWithTheSameIdentifierReplaceAnEarlierOne) {
  processes.add(10, "/bin/a");
  processes.add(20, "/bin/b");
  applications.add(20, "com.b", "B");
  applications.add(10, "com.first", "First");
  applications.add(10, "com.second", "Second");
  const std::vector<RawSample>& snapshot = sampler.sample();
  ASSERT_EQ(snapshot.size(), 2U);
  EXPECT_EQ(snapshot[0].bundleID, "com.second");
  EXPECT_EQ(snapshot[1].bundleID, "com.b");
}

TEST_P(ProcessSamplerTest, TakesTheLastOfManyApplicationsWithTheSameIdentifier) {
  processes.add(10, "/bin/a");
  applications.add(20, "com.b", "B");
  for (int number = 0; number < 100; ++number)
    applications.add(10, "com." + std::to_string(number), std::nullopt);
  EXPECT_EQ(sampler.sample().at(0).bundleID, "com.99");
}

TEST_P(ProcessSamplerTest, ForgetsApplicationsThatEnded) {
  processes.add(10, "/bin/a");
  applications.add(10, "com.a", "A");
  EXPECT_EQ(sampler.sample().at(0).bundleID, "com.a");
  applications.clear();
  EXPECT_EQ(sampler.sample().at(0).bundleID, std::nullopt);
  EXPECT_EQ(sampler.sample().at(0).displayName, "a");
}

TEST_P(ProcessSamplerTest, AsksOnlyApplicationsWithAProcessForTheirProperties) {
  processes.add(10, "/bin/a");
  processes.add(12, "/bin/refused").readable = false;
  applications.add(11, "com.gone", "Gone");
  applications.add(12, "com.refused", "Refused");
  sampler.sample();
  EXPECT_EQ(applications.propertiesAsked(), 0);
}

// Counters.

TEST_F(ProcessSamplerAlone, AsksForNoPathWhileTheTableSaysThatTheProgramIsTheSame) {
  processes.add(10, "/usr/bin/make").usage.programVersion = 1;
  sampler.sample();
  EXPECT_EQ(sampler.sample().front().executable, "make");
  EXPECT_EQ(processes.pathAsked, Pids{10});
  processes.at(10).path = "/usr/bin/cc";
  processes.at(10).usage.programVersion = 2;
  EXPECT_EQ(sampler.sample().front().executable, "cc");
}

TEST_F(ProcessSamplerAlone, AsksForThePathOfAnotherProcessUnderTheSameIdentifier) {
  processes.add(10, "/usr/bin/make").usage.programVersion = 1;
  sampler.sample();
  processes.at(10).path = "/usr/bin/cc";
  processes.at(10).usage.startTime = 5;
  EXPECT_EQ(sampler.sample().front().executable, "cc");
}

TEST_P(ProcessSamplerTest, ConvertsThreeTicksOf125ThirdsTo125Nanoseconds) {
  processes.units = {125, 3};
  processes.add(10, "/bin/a").usage.userTime = 3;
  EXPECT_EQ(sampler.sample().at(0).cpuNanos, 125U);
}

TEST_P(ProcessSamplerTest, ConvertsFourTicksOf125ThirdsTo166Nanoseconds) {
  processes.units = {125, 3};
  processes.add(10, "/bin/a").usage = {3, 1, 0, 0};
  EXPECT_EQ(sampler.sample().at(0).cpuNanos, 166U);
}

TEST_P(ProcessSamplerTest, StaysExactWhereTheProductWouldNotFit64Bits) {
  EXPECT_EQ(ProcessSampler::nanoseconds(400'000'000'000'000'000U, {125, 3}),
            16'666'666'666'666'666'666U);
}

TEST_P(ProcessSamplerTest, ConvertsClockTicksOfAHundredthOfASecond) {
  EXPECT_EQ(ProcessSampler::nanoseconds(250, {1'000'000'000, 100}), 2'500'000'000U);
}

TEST_F(ProcessSamplerAlone, AsksForTheTimeBaseOnce) {
  processes.add(10, "/bin/a");
  processes.add(11, "/bin/b");
  sampler.sample();
  sampler.sample();
  EXPECT_EQ(processes.timebaseAsked, 1);
}

TEST_F(ProcessSamplerAlone, DoesNotAskForTheTimeBaseBeforeItIsNeeded) {
  sampler.sample();
  EXPECT_EQ(processes.timebaseAsked, 0);
}

TEST_P(ProcessSamplerTest, WrapsTheSumOfTheTwoTimes) {
  processes.add(10, "/bin/a").usage = {kLargestCounter, 3, 0, 0};
  EXPECT_EQ(sampler.sample().at(0).cpuNanos, 2U);
}

TEST_P(ProcessSamplerTest, WrapsTheSumOfTheDiskBytes) {
  processes.add(10, "/bin/a").usage = {0, 0, 5, kLargestCounter};
  EXPECT_EQ(sampler.sample().at(0).diskBytes, 4U);
}

// What the table that ships makes otherwise: what was seen of a process is not lost.

class ProcessSamplerThatCountsWhole : public SampledPorts {
 protected:
  ProcessSamplerThatCountsWhole() : SampledPorts(Composition::shipped) {}

  const RawSample* sampleOf(const std::string& executable) {
    fakes.clock.advance(std::chrono::seconds(2));
    const std::vector<RawSample>& snapshot = sampler.sample();
    const auto found = std::ranges::find_if(
        snapshot, [&](const RawSample& sample) { return sample.executable == executable; });
    return found == snapshot.end() ? nullptr : &*found;
  }
};

TEST_F(ProcessSamplerThatCountsWhole, AProcessThatTheListLeftOutIsThereAsLongAsItLives) {
  processes.add(10, "/bin/a").usage.userTime = 7;
  sampler.sample();
  processes.bytesWritten = 0;
  const RawSample* sample = sampleOf("a");
  ASSERT_TRUE(sample);
  EXPECT_EQ(sample->cpuNanos, 7U);
}

TEST_F(ProcessSamplerThatCountsWhole, AProcessThatMayNoLongerBeReadKeepsWhatItHad) {
  processes.add(10, "/bin/a").usage = {7, 0, 9, 0};
  sampler.sample();
  processes.at(10).readable = false;
  const RawSample* sample = sampleOf("a");
  ASSERT_TRUE(sample);
  EXPECT_EQ(sample->pid, 10);
  EXPECT_EQ(sample->cpuNanos, 7U);
  EXPECT_EQ(sample->diskBytes, 9U);
}

TEST_F(ProcessSamplerThatCountsWhole, AnEndedProcessIsThereOnceMoreUnderANumberThatNoneHas) {
  processes.add(10, "/bin/a").usage = {7, 0, 9, 0};
  applications.add(10, "com.a", "A");
  sampler.sample();
  processes.remove(10);
  applications.clear();
  const RawSample* sample = sampleOf("a");
  ASSERT_TRUE(sample);
  EXPECT_GE(sample->pid, AccountBook::kFirstIdentifier);
  EXPECT_EQ(sample->bundleID, "com.a");
  EXPECT_EQ(sample->displayName, "A");
  EXPECT_EQ(sample->cpuNanos, 7U);
  EXPECT_EQ(sample->diskBytes, 9U);
  EXPECT_FALSE(sampleOf("a"));
}

TEST(ProcessSamplerDeathTest, EndsTheProcessWhenTheTimeOverflows) {
  EXPECT_DEATH(ProcessSampler::nanoseconds(kLargestCounter, {2, 1}),
               "fatal error: arithmetic overflow in a multiplication");
  EXPECT_DEATH(ProcessSampler::nanoseconds(kLargestCounter, {kLargestCounter, kLargestCounter - 1}),
               "fatal error: arithmetic overflow in an addition");
}

TEST(ProcessSamplerDeathTest, EndsTheProcessWhenTheRemainderOverflows) {
  EXPECT_DEATH(ProcessSampler::nanoseconds(3, {kLargestCounter, 4}),
               "fatal error: arithmetic overflow in a multiplication");
}

TEST(ProcessSamplerDeathTest, EndsTheProcessWithoutADenominator) {
  EXPECT_DEATH(ProcessSampler::nanoseconds(1, {1, 0}), "fatal error: .*denominator");
}

}  // namespace
}  // namespace tidewell

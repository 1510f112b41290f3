#include "Tidewell/ProcessSampler.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Tests/Fakes/FakeProcessTable.h"
#include "Tests/Fakes/FakeRunningApplications.h"

namespace tidewell {
namespace {

using Pids = std::vector<std::int32_t>;

constexpr std::uint64_t kLargestCounter = 18446744073709551615U;

class ProcessSamplerTest : public testing::Test {
 protected:
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
    return snapshot.empty() ? "left out" : snapshot.front().executable;
  }

  std::shared_ptr<CallLog> calls = std::make_shared<CallLog>();
  FakeProcessTable processes{calls};
  FakeRunningApplications applications{calls};
  ProcessSampler sampler{processes, applications};
};

TEST_F(ProcessSamplerTest, FillsEveryFieldOfAnApplicationsProcess) {
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

TEST_F(ProcessSamplerTest, FillsABackgroundProcessFromItsPathAlone) {
  processes.add(10, "/usr/sbin/bar");
  applications.add(11, "com.example.other", "Other");
  const std::vector<RawSample>& snapshot = sampler.sample();
  ASSERT_EQ(snapshot.size(), 1U);
  EXPECT_EQ(snapshot[0].executable, "bar");
  EXPECT_EQ(snapshot[0].bundleID, std::nullopt);
  EXPECT_EQ(snapshot[0].displayName, "bar");
}

// The list of processes.

TEST_F(ProcessSamplerTest, AnEmptyListGivesAnEmptySnapshotWithoutTouchingTheCounters) {
  processes.add(10, "/bin/a");
  processes.bytesNeeded = 0;
  EXPECT_TRUE(sampler.sample().empty());
  processes.bytesNeeded = -1;
  EXPECT_TRUE(sampler.sample().empty());
  EXPECT_TRUE(processes.bufferLengths.empty());
  EXPECT_TRUE(processes.usageAsked.empty());
}

TEST_F(ProcessSamplerTest, AFailedSecondListingGivesAnEmptySnapshotWithoutTouchingTheCounters) {
  processes.add(10, "/bin/a");
  processes.bytesWritten = 0;
  EXPECT_TRUE(sampler.sample().empty());
  processes.bytesWritten = -1;
  EXPECT_TRUE(sampler.sample().empty());
  EXPECT_TRUE(processes.usageAsked.empty());
}

TEST_F(ProcessSamplerTest, AFailedListingEmptiesTheSnapshotOfBefore) {
  processes.add(10, "/bin/a");
  EXPECT_EQ(sampledPids(), Pids{10});
  processes.bytesNeeded = -1;
  EXPECT_TRUE(sampler.sample().empty());
}

TEST_F(ProcessSamplerTest, DropsTheKernelAndNegativeIdentifiers) {
  processes.add(0, "/kernel");
  processes.add(10, "/bin/a");
  processes.add(-3, "/bin/odd");
  EXPECT_EQ(sampledPids(), Pids{10});
  EXPECT_EQ(processes.usageAsked, Pids{10});
}

TEST_F(ProcessSamplerTest, DropsTheZeroPaddingBehindTheList) {
  processes.add(10, "/bin/a");
  processes.add(11, "/bin/b");
  processes.bytesNeeded = 40;
  processes.bytesWritten = 40;
  EXPECT_EQ(sampledPids(), (Pids{10, 11}));
}

TEST_F(ProcessSamplerTest, TakesNoMoreThanTheListSaysItWrote) {
  processes.add(10, "/bin/a");
  processes.add(11, "/bin/b");
  processes.bytesWritten = 7;
  EXPECT_EQ(sampledPids(), Pids{10});
}

TEST_F(ProcessSamplerTest, TakesNoMoreThanItHadRoomFor) {
  processes.add(10, "/bin/a");
  processes.bytesWritten = 4000;
  EXPECT_EQ(sampledPids(), Pids{10});
}

TEST_F(ProcessSamplerTest, LeavesNoSpareRoomForProcessesThatStartMeanwhile) {
  processes.add(10, "/bin/a");
  processes.add(11, "/bin/b");
  processes.bytesNeeded = 7;
  EXPECT_EQ(sampledPids(), Pids{10});
  EXPECT_EQ(processes.bufferLengths, std::vector<std::size_t>{1});
}

TEST_F(ProcessSamplerTest, KeepsTheKernelsOrder) {
  processes.add(30, "/bin/c");
  processes.add(10, "/bin/a");
  processes.add(20, "/bin/b");
  EXPECT_EQ(sampledPids(), (Pids{30, 10, 20}));
}

TEST_F(ProcessSamplerTest, AsksForTheApplicationsBeforeTheProcesses) {
  sampler.sample();
  EXPECT_EQ(calls->all(), (std::vector<std::string>{"list applications", "list processes"}));
}

// Which processes are left out.

TEST_F(ProcessSamplerTest, SkipsAProcessWhoseCountersAreRefusedWithoutAskingForItsPath) {
  processes.add(10, "/bin/a").readable = false;
  processes.add(11, "/bin/b");
  EXPECT_EQ(sampledPids(), Pids{11});
  EXPECT_EQ(processes.usageAsked, (Pids{10, 11}));
  EXPECT_EQ(processes.pathAsked, Pids{11});
}

TEST_F(ProcessSamplerTest, ASkippedProcessLeavesNothingBehindInItsNeighbour) {
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

TEST_F(ProcessSamplerTest, LeavesOutABackgroundProcessWhosePathCannotBeRead) {
  processes.add(10, std::nullopt);
  EXPECT_TRUE(sampler.sample().empty());
}

TEST_F(ProcessSamplerTest, NamesAnApplicationWhosePathCannotBeReadByItsLocalizedName) {
  processes.add(10, std::nullopt);
  applications.add(10, "com.example.film", "Film Maker");
  const std::vector<RawSample>& snapshot = sampler.sample();
  ASSERT_EQ(snapshot.size(), 1U);
  EXPECT_EQ(snapshot[0].executable, "Film Maker");
  EXPECT_EQ(snapshot[0].displayName, "Film Maker");
  EXPECT_EQ(snapshot[0].bundleID, "com.example.film");
}

TEST_F(ProcessSamplerTest, LeavesOutAnApplicationWithNeitherPathNorName) {
  processes.add(10, std::nullopt);
  applications.add(10, "com.example.film", std::nullopt);
  EXPECT_TRUE(sampler.sample().empty());
}

// Names.

TEST_F(ProcessSamplerTest, NamesAProcessAfterItsBundle) {
  EXPECT_EQ(nameFor("/Applications/Foo Bar.app/Contents/MacOS/foo"), "Foo Bar");
  EXPECT_EQ(nameFor("/x.app/y"), "x");
}

TEST_F(ProcessSamplerTest, NamesAProcessOutsideABundleAfterItsFile) {
  EXPECT_EQ(nameFor("/usr/sbin/bar"), "bar");
  EXPECT_EQ(nameFor("bar"), "bar");
}

TEST_F(ProcessSamplerTest, NamesANestedHelperAfterTheInnermostBundle) {
  EXPECT_EQ(
      nameFor("/Applications/Outer.app/Contents/Frameworks/Inner Helper.app/Contents/MacOS/x"),
      "Inner Helper");
}

TEST_F(ProcessSamplerTest, TakesNothingElseForABundle) {
  EXPECT_EQ(nameFor("/opt/tool.apple/run"), "run");
  EXPECT_EQ(nameFor("/opt/Tool.APP/run"), "run");
  EXPECT_EQ(nameFor("/opt/tool.app"), "tool.app");
}

TEST_F(ProcessSamplerTest, NamesAProcessAfterItsFileWhereTheBundleHasNoName) {
  EXPECT_EQ(nameFor("/.app/y"), "y");
  EXPECT_EQ(nameFor(".app/y"), "y");
}

TEST_F(ProcessSamplerTest, IgnoresEmptyPiecesOfAPath) {
  EXPECT_EQ(nameFor("//opt//Tool.app//x"), "Tool");
  EXPECT_EQ(nameFor("/opt/Outer/.app/x"), "Outer");
  EXPECT_EQ(nameFor("/usr/bin/bar//"), "bar");
}

TEST_F(ProcessSamplerTest, NamesTheRootFolderWithASlash) {
  EXPECT_EQ(nameFor("/"), "/");
  EXPECT_EQ(nameFor("//"), "/");
}

TEST_F(ProcessSamplerTest, ReadsAPathThatFillsTheWholeBuffer) {
  const std::string longName(4000, 'n');
  EXPECT_EQ(nameFor("/opt/" + longName), longName);
}

TEST_F(ProcessSamplerTest, FallsBackToTheExecutableNameForDisplay) {
  processes.add(10, "/opt/bin/film");
  applications.add(10, "com.example.film", std::nullopt);
  const std::vector<RawSample>& snapshot = sampler.sample();
  ASSERT_EQ(snapshot.size(), 1U);
  EXPECT_EQ(snapshot[0].displayName, "film");
  EXPECT_EQ(snapshot[0].bundleID, "com.example.film");
}

TEST_F(ProcessSamplerTest, ShowsAnEmptyLocalizedNameAsItIs) {
  processes.add(10, "/opt/bin/film");
  applications.add(10, "com.example.film", "");
  const std::vector<RawSample>& snapshot = sampler.sample();
  ASSERT_EQ(snapshot.size(), 1U);
  EXPECT_EQ(snapshot[0].executable, "film");
  EXPECT_EQ(snapshot[0].displayName, "");
}

TEST_F(ProcessSamplerTest, LeavesOutAnApplicationWithoutAPathWhoseNameIsEmpty) {
  processes.add(10, std::nullopt);
  applications.add(10, "com.example.film", "");
  EXPECT_TRUE(sampler.sample().empty());
}

// The applications.

TEST_F(ProcessSamplerTest, LetsALaterApplicationWithTheSameIdentifierReplaceAnEarlierOne) {
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

TEST_F(ProcessSamplerTest, TakesTheLastOfManyApplicationsWithTheSameIdentifier) {
  processes.add(10, "/bin/a");
  applications.add(20, "com.b", "B");
  for (int number = 0; number < 100; ++number)
    applications.add(10, "com." + std::to_string(number), std::nullopt);
  EXPECT_EQ(sampler.sample().at(0).bundleID, "com.99");
}

TEST_F(ProcessSamplerTest, ForgetsApplicationsThatEnded) {
  processes.add(10, "/bin/a");
  applications.add(10, "com.a", "A");
  EXPECT_EQ(sampler.sample().at(0).bundleID, "com.a");
  applications.clear();
  EXPECT_EQ(sampler.sample().at(0).bundleID, std::nullopt);
  EXPECT_EQ(sampler.sample().at(0).displayName, "a");
}

TEST_F(ProcessSamplerTest, AsksOnlyApplicationsWithAProcessForTheirProperties) {
  processes.add(10, "/bin/a");
  processes.add(12, "/bin/refused").readable = false;
  applications.add(11, "com.gone", "Gone");
  applications.add(12, "com.refused", "Refused");
  sampler.sample();
  EXPECT_EQ(applications.propertiesAsked(), 0);
}

// Counters.

TEST_F(ProcessSamplerTest, ConvertsThreeTicksOf125ThirdsTo125Nanoseconds) {
  processes.units = {125, 3};
  processes.add(10, "/bin/a").usage.userTime = 3;
  EXPECT_EQ(sampler.sample().at(0).cpuNanos, 125U);
}

TEST_F(ProcessSamplerTest, ConvertsFourTicksOf125ThirdsTo166Nanoseconds) {
  processes.units = {125, 3};
  processes.add(10, "/bin/a").usage = {3, 1, 0, 0};
  EXPECT_EQ(sampler.sample().at(0).cpuNanos, 166U);
}

TEST_F(ProcessSamplerTest, StaysExactWhereTheProductWouldNotFit64Bits) {
  EXPECT_EQ(ProcessSampler::nanoseconds(400'000'000'000'000'000U, {125, 3}),
            16'666'666'666'666'666'666U);
}

TEST_F(ProcessSamplerTest, ConvertsClockTicksOfAHundredthOfASecond) {
  EXPECT_EQ(ProcessSampler::nanoseconds(250, {1'000'000'000, 100}), 2'500'000'000U);
}

TEST_F(ProcessSamplerTest, AsksForTheTimeBaseOnce) {
  processes.add(10, "/bin/a");
  processes.add(11, "/bin/b");
  sampler.sample();
  sampler.sample();
  EXPECT_EQ(processes.timebaseAsked, 1);
}

TEST_F(ProcessSamplerTest, DoesNotAskForTheTimeBaseBeforeItIsNeeded) {
  sampler.sample();
  EXPECT_EQ(processes.timebaseAsked, 0);
}

TEST_F(ProcessSamplerTest, WrapsTheSumOfTheTwoTimes) {
  processes.add(10, "/bin/a").usage = {kLargestCounter, 3, 0, 0};
  EXPECT_EQ(sampler.sample().at(0).cpuNanos, 2U);
}

TEST_F(ProcessSamplerTest, WrapsTheSumOfTheDiskBytes) {
  processes.add(10, "/bin/a").usage = {0, 0, 5, kLargestCounter};
  EXPECT_EQ(sampler.sample().at(0).diskBytes, 4U);
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

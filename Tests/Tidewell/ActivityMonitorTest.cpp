#include "Tidewell/ActivityMonitor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Tests/Fakes/ComposedPorts.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

constexpr std::uint64_t kLargest = 18446744073709551615U;

Texts ids(const std::vector<BusyApp>& apps) {
  Texts result;
  for (const BusyApp& app : apps)
    result.push_back(app.id);
  return result;
}

/// A monitor over fakes. Its process table is the system's own, or, as in the program, the one that
/// also counts ended processes. The monitor does the same on both, except where they differ on
/// purpose, and there each table has a test of its own.
class MonitoredPorts : public testing::Test {
 protected:
  explicit MonitoredPorts(Composition composition) : fakes(composition) {}

  /// Starts a process that belongs to no application.
  void startTool(std::int32_t pid, const std::string& name) {
    fakes.processes.add(pid, "/usr/bin/" + name);
  }

  void startApp(std::int32_t pid, const std::string& bundleID, const std::string& name) {
    fakes.processes.add(pid, "/opt/" + name);
    fakes.applications.add(pid, bundleID, name);
  }

  void useCPU(std::int32_t pid, Seconds time) {
    fakes.processes.at(pid).usage.userTime += static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(time).count());
  }

  void writeDisk(std::int32_t pid, std::uint64_t kilobytes) {
    fakes.processes.at(pid).usage.diskBytesWritten += kilobytes * 1024;
  }

  std::vector<BusyApp> tick() { return monitor.tick(limits); }

  std::vector<BusyApp> tickAfter(Seconds interval) {
    fakes.clock.advance(interval);
    return tick();
  }

  /// Lets 2 s pass, in which process `pid` uses this share of a core, and ticks.
  std::vector<BusyApp> tickWith(std::int32_t pid, double cpuPercent) {
    useCPU(pid, Seconds(cpuPercent * 2 / 100));
    return tickAfter(2s);
  }

  /// Ends the network measurement that the last tick asked for, with these totals.
  void finishNetworkRun(const NetworkTotals& totals) {
    fakes.network.setTotals(totals);
    fakes.queues.runAll();
  }

  ComposedPorts fakes;
  ActivityThresholds limits{15.0, 500.0, 100.0, 0, {}, false};
  ActivityMonitor monitor{fakes.ports};
};

class ActivityMonitorTest : public MonitoredPorts, public testing::WithParamInterface<Composition> {
 protected:
  ActivityMonitorTest() : MonitoredPorts(GetParam()) {}
};

class ActivityMonitorOfLivingProcesses : public MonitoredPorts {
 protected:
  ActivityMonitorOfLivingProcesses() : MonitoredPorts(Composition::bare) {}
};

class ActivityMonitorThatCountsWhole : public MonitoredPorts {
 protected:
  ActivityMonitorThatCountsWhole() : MonitoredPorts(Composition::shipped) {}
};

INSTANTIATE_TEST_SUITE_P(Over, ActivityMonitorTest,
                         testing::Values(Composition::bare, Composition::shipped),
                         [](const auto& composition) {
                           return composition.param == Composition::bare ? "ThePlainTable"
                                                                         : "TheTableThatShips";
                         });

// Ticks that have nothing to compare with.

TEST_P(ActivityMonitorTest, TheFirstTickOnlyPrimes) {
  startTool(10, "tool");
  useCPU(10, 100s);
  EXPECT_TRUE(tick().empty());
  EXPECT_TRUE(monitor.lastBusy().empty());
  EXPECT_TRUE(monitor.lastCandidates().empty());
}

TEST_P(ActivityMonitorTest, TheFirstTickAfterAResetOnlyPrimes) {
  startTool(10, "tool");
  tick();
  EXPECT_EQ(ids(tickWith(10, 50)), Texts{"tool"});
  monitor.reset();
  EXPECT_TRUE(monitor.lastBusy().empty());
  EXPECT_TRUE(monitor.lastCandidates().empty());
  EXPECT_TRUE(tickWith(10, 50).empty());
  EXPECT_TRUE(monitor.lastBusy().empty());
  EXPECT_TRUE(monitor.lastCandidates().empty());
  EXPECT_EQ(ids(tickWith(10, 50)), Texts{"tool"});
}

TEST_P(ActivityMonitorTest, ASecondTickAfterATenthOfASecondReprimes) {
  startTool(10, "tool");
  tick();
  useCPU(10, 10s);
  EXPECT_TRUE(tickAfter(0.1s).empty());
  useCPU(10, 1s);
  const std::vector<BusyApp> busy = tickAfter(2s);
  ASSERT_EQ(busy.size(), 1U);
  EXPECT_DOUBLE_EQ(busy[0].cpuPercent, 50) << "what was used before the second tick is forgotten";
}

TEST_P(ActivityMonitorTest, TicksTwoSecondsApartComputeRates) {
  startTool(10, "tool");
  tick();
  EXPECT_EQ(ids(tickWith(10, 50)), Texts{"tool"});
}

TEST_P(ActivityMonitorTest, AnIntervalOfExactlyAFifthOfASecondReprimes) {
  startTool(10, "tool");
  tick();
  useCPU(10, 1s);
  EXPECT_TRUE(tickAfter(0.2s).empty());
  useCPU(10, 1s);
  EXPECT_EQ(ids(tickAfter(0.201s)), Texts{"tool"});
}

TEST_P(ActivityMonitorTest, AnIntervalOfExactlyTwoMinutesReprimes) {
  startTool(10, "tool");
  tick();
  useCPU(10, 120s);
  EXPECT_TRUE(tickAfter(120s).empty());
  useCPU(10, 120s);
  EXPECT_EQ(ids(tickAfter(119.9s)), Texts{"tool"});
}

TEST_P(ActivityMonitorTest, ANegativeIntervalReprimes) {
  startTool(10, "tool");
  tick();
  useCPU(10, 10s);
  EXPECT_TRUE(tickAfter(-3600s).empty()) << "from a clock that breaks its promise";
  EXPECT_EQ(ids(tickWith(10, 50)), Texts{"tool"});
}

TEST_P(ActivityMonitorTest, SettingTheWallClockChangesNothing) {
  startTool(10, "tool");
  tick();
  fakes.clock.stepWallTime(-3600s);
  EXPECT_EQ(tickWith(10, 50).at(0).cpuPercent, 50);
  fakes.clock.stepWallTime(3600s);
  EXPECT_EQ(tickWith(10, 50).at(0).busyFor, 2);
}

TEST_P(ActivityMonitorTest, ReprimingLeavesTheLastResultsUntouched) {
  limits.honorAppAssertions = true;
  fakes.assertions.hold(500, "PreventSystemSleep");
  startTool(10, "tool");
  tick();
  tickWith(10, 50);
  fakes.assertions.holders.clear();
  fakes.processes.rows.clear();
  EXPECT_TRUE(tickAfter(0.1s).empty());
  EXPECT_EQ(ids(monitor.lastBusy()), Texts{"tool"});
  EXPECT_EQ(ids(monitor.lastCandidates()), Texts{"tool"});
  EXPECT_EQ(monitor.assertingApps(), Texts{"pid 500"});
}

TEST_P(ActivityMonitorTest, ARunContinuesAcrossAGapWithItsOldBeginning) {
  startTool(10, "tool");
  tick();
  tickWith(10, 50);
  EXPECT_TRUE(tickAfter(200s).empty());
  EXPECT_EQ(tickWith(10, 50).at(0).busyFor, 202);
}

// The order of the steps of one tick.

TEST_P(ActivityMonitorTest, RefreshesTheNetworkBeforeItTakesTheSnapshot) {
  limits.honorAppAssertions = true;
  const Texts inOrder = {"submit work to a queue", "list processes", "list assertions"};
  tick();
  fakes.calls->clear();
  finishNetworkRun({});
  tickAfter(2s);
  EXPECT_EQ(fakes.calls->only(inOrder), inOrder);
}

TEST_P(ActivityMonitorTest, ANetworkRunThatEndsWithinTheTickCountsAtOnce) {
  fakes.queues.runAtOnce();
  startTool(10, "tool");
  fakes.network.setTotals({{10, 0}});
  tick();
  fakes.network.setTotals({{10, 2048000}});
  const std::vector<BusyApp> busy = tickAfter(2s);
  ASSERT_EQ(busy.size(), 1U);
  EXPECT_DOUBLE_EQ(busy[0].netKBps, 1000);
}

TEST_P(ActivityMonitorTest, ReadsTheClockAfterTheSnapshot) {
  startTool(10, "tool");
  tick();
  fakes.processes.whileListing = [this] { fakes.clock.advance(1s); };
  useCPU(10, 3s);
  EXPECT_DOUBLE_EQ(tickAfter(2s).at(0).cpuPercent, 100) << "3 s of 3 s";
}

TEST_P(ActivityMonitorTest, NeverWaitsForTheNetworkMeasurement) {
  tick();
  tickAfter(2s);
  EXPECT_EQ(fakes.network.measurements, 0);
  EXPECT_EQ(fakes.queues.waiting(), 1U);
}

// Rates.

TEST_P(ActivityMonitorTest, TwoSecondsOfCPUTimeInTwoSecondsAreAHundredPercent) {
  startApp(10, "com.example.app", "App");
  startApp(11, "com.example.app", "App");
  tick();
  useCPU(10, 1.5s);
  useCPU(11, 0.5s);
  const std::vector<BusyApp> busy = tickAfter(2s);
  ASSERT_EQ(busy.size(), 1U);
  EXPECT_DOUBLE_EQ(busy[0].cpuPercent, 100);
}

TEST_P(ActivityMonitorTest, EightSecondsOfCPUTimeInTwoSecondsAreFourHundredPercent) {
  startTool(10, "tool");
  tick();
  EXPECT_DOUBLE_EQ(tickWith(10, 400).at(0).cpuPercent, 400);
}

TEST_P(ActivityMonitorTest, DiskAndNetworkCountInKilobytesPerSecond) {
  startTool(10, "tool");
  finishNetworkRun({});
  tick();
  finishNetworkRun({{10, 1024}});
  tickAfter(2s);
  finishNetworkRun({{10, 411648}});  // 401 KB more.
  writeDisk(10, 1001);
  const std::vector<BusyApp> busy = tickAfter(2s);
  ASSERT_EQ(busy.size(), 1U);
  EXPECT_DOUBLE_EQ(busy[0].cpuPercent, 0);
  EXPECT_DOUBLE_EQ(busy[0].diskKBps, 500.5);
  EXPECT_DOUBLE_EQ(busy[0].netKBps, 200.5);
}

TEST_P(ActivityMonitorTest, SumsTheDiskBytesOfAnApplicationsProcesses) {
  startApp(10, "com.example.app", "App");
  startApp(11, "com.example.app", "App");
  tick();
  writeDisk(10, 900);
  writeDisk(11, 300);
  EXPECT_DOUBLE_EQ(tickAfter(2s).at(0).diskKBps, 600);
}

TEST_P(ActivityMonitorTest, UsesTheTotalsOfTheLastNetworkRunThatEnded) {
  startTool(10, "tool");
  tick();
  finishNetworkRun({{10, 0}});
  tickAfter(2s);
  fakes.network.setTotals({{10, 2048000}});
  EXPECT_TRUE(tickAfter(2s).empty()) << "the run has not ended";
  fakes.queues.runAll();
  EXPECT_DOUBLE_EQ(tickAfter(2s).at(0).netKBps, 1000);
}

TEST_P(ActivityMonitorTest, SumsTheNetworkBytesOfAnApplicationsProcesses) {
  startApp(10, "com.example.app", "App");
  startApp(11, "com.example.app", "App");
  tick();
  finishNetworkRun({{10, 0}, {11, 0}, {12, 9999999}});
  tickAfter(2s);
  finishNetworkRun({{10, 204800}, {11, 204800}, {12, 99999999}});
  EXPECT_DOUBLE_EQ(tickAfter(2s).at(0).netKBps, 200);
}

TEST_P(ActivityMonitorTest, AMissingNetworkMeasurementCountsAsNothing) {
  startTool(10, "tool");
  tick();
  finishNetworkRun({{11, 10}});
  tickAfter(2s);
  EXPECT_DOUBLE_EQ(tickWith(10, 50).at(0).netKBps, 0);
}

TEST_P(ActivityMonitorTest, SumsWrapAround) {
  startApp(10, "com.example.app", "App");
  startApp(11, "com.example.app", "App");
  fakes.processes.at(10).usage = {kLargest, 0, kLargest, 0};
  fakes.processes.at(11).usage = {1, 0, 1, 0};
  tick();
  useCPU(11, 2s);
  writeDisk(11, 2000);
  const std::vector<BusyApp> busy = tickAfter(2s);
  ASSERT_EQ(busy.size(), 1U);
  EXPECT_DOUBLE_EQ(busy[0].cpuPercent, 100);
  EXPECT_DOUBLE_EQ(busy[0].diskKBps, 1000);
}

TEST_P(ActivityMonitorTest, NetworkSumsWrapAround) {
  startApp(10, "com.example.app", "App");
  startApp(11, "com.example.app", "App");
  tick();
  finishNetworkRun({{10, 18446744073709551615U}, {11, 1}});
  tickAfter(2s);
  finishNetworkRun({{10, 18446744073709551615U}, {11, 409601}});
  EXPECT_DOUBLE_EQ(tickAfter(2s).at(0).netKBps, 200);
}

TEST_P(ActivityMonitorTest, AnApplicationThatAppearedHasRatesFromItsSecondTickOn) {
  tick();
  startTool(10, "tool");
  EXPECT_TRUE(tickWith(10, 50).empty());
  EXPECT_EQ(ids(tickWith(10, 50)), Texts{"tool"});
}

// The application that a process belongs to.

TEST_P(ActivityMonitorTest, SumsTwoProcessesWithOneBundleIdentifier) {
  startApp(10, "com.example.app", "App");
  startApp(11, "com.example.app", "Helper");
  tick();
  useCPU(10, 0.4s);
  useCPU(11, 0.4s);
  const std::vector<BusyApp> busy = tickAfter(2s);
  ASSERT_EQ(busy.size(), 1U);
  EXPECT_EQ(busy[0].id, "com.example.app");
  EXPECT_EQ(busy[0].display, "App") << "the first process names the application";
  EXPECT_DOUBLE_EQ(busy[0].cpuPercent, 40);
}

TEST_P(ActivityMonitorTest, AProcessWithoutABundleIsItsOwnApplicationUnderItsExecutableName) {
  startTool(10, "Tool");
  startApp(11, "com.example.app", "Tool");
  tick();
  useCPU(11, 1s);
  const std::vector<BusyApp> busy = tickWith(10, 80);
  EXPECT_EQ(ids(busy), (Texts{"Tool", "com.example.app"})) << "case kept";
}

TEST_P(ActivityMonitorTest, BundleIdentifiersThatDifferInCaseAreTwoApplications) {
  startApp(10, "com.Example", "A");
  startApp(11, "com.example", "B");
  tick();
  useCPU(11, 1s);
  EXPECT_EQ(ids(tickWith(10, 80)), (Texts{"com.Example", "com.example"}));
}

TEST_P(ActivityMonitorTest, ACataloguedApplicationHasTheCataloguesNameAndCategory) {
  startApp(10, "COM.APPLE.dt.xcode", "Xcode-beta");
  tick();
  const BusyApp app = tickWith(10, 50).at(0);
  EXPECT_EQ(app.id, "COM.APPLE.dt.xcode");
  EXPECT_EQ(app.display, "Xcode");
  EXPECT_EQ(app.category, AppCategory::development);
}

TEST_P(ActivityMonitorTest, AnUnknownApplicationKeepsItsNameAndIsOther) {
  startApp(10, "com.example.app", "Some App");
  tick();
  const BusyApp app = tickWith(10, 50).at(0);
  EXPECT_EQ(app.display, "Some App");
  EXPECT_EQ(app.category, AppCategory::other);
}

TEST_P(ActivityMonitorTest, AKnownToolInAnUnknownBundleTakesTheToolsEntryUnderTheBundlesKey) {
  fakes.processes.add(10, "/opt/editor/node");
  fakes.applications.add(10, "com.example.editor", "Editor");
  tick();
  const BusyApp app = tickWith(10, 50).at(0);
  EXPECT_EQ(app.id, "com.example.editor");
  EXPECT_EQ(app.display, "npm / node");
  EXPECT_EQ(app.category, AppCategory::development);
}

TEST_P(ActivityMonitorTest, TheFirstProcessOfAnApplicationDecidesItsEntryAndFloor) {
  startApp(10, "com.example.editor", "Editor");
  fakes.processes.add(11, "/opt/editor/node");
  fakes.applications.add(11, "com.example.editor", "Editor");
  tick();
  EXPECT_TRUE(tickWith(11, 10).empty()) << "the floor of node, 8 %, does not count";
  const BusyApp app = tickWith(11, 20).at(0);
  EXPECT_EQ(app.display, "Editor");
  EXPECT_EQ(app.category, AppCategory::other);
}

// Thresholds.

TEST_P(ActivityMonitorTest, AFloorOf8At6PercentIsNotOverThoughTheUserSays5) {
  limits.cpuPercent = 5;
  startTool(10, "make");
  tick();
  EXPECT_TRUE(tickWith(10, 6).empty());
  EXPECT_TRUE(monitor.lastCandidates().empty());
}

TEST_P(ActivityMonitorTest, AFloorOf3At4PercentIsOverThoughTheUserSays20) {
  limits.cpuPercent = 20;
  startTool(10, "claude");
  tick();
  EXPECT_EQ(ids(tickWith(10, 4)), Texts{"claude"});
}

TEST_P(ActivityMonitorTest, WithoutAFloorTheUsersThresholdCounts) {
  limits.cpuPercent = 20;
  startTool(10, "curl");
  startTool(11, "unknown");
  tick();
  useCPU(11, 0.39s);
  EXPECT_TRUE(tickWith(10, 19.5).empty());
  useCPU(11, 0.42s);
  EXPECT_EQ(ids(tickWith(10, 20.5)), (Texts{"unknown", "curl"}));
}

TEST_P(ActivityMonitorTest, AFloorLeavesTheOtherThresholdsAsTheyAre) {
  startTool(10, "make");
  tick();
  writeDisk(10, 1000);
  EXPECT_EQ(ids(tickAfter(2s)), Texts{"make"});
}

TEST_P(ActivityMonitorTest, CPUExactlyAtItsThresholdIsOver) {
  limits.cpuPercent = 50;
  startTool(10, "tool");
  tick();
  useCPU(10, 1s);
  EXPECT_EQ(ids(tickAfter(2s)), Texts{"tool"});
  useCPU(10, 0.999999s);
  EXPECT_TRUE(tickAfter(2s).empty());
}

TEST_P(ActivityMonitorTest, DiskExactlyAtItsThresholdIsOver) {
  startTool(10, "tool");
  tick();
  writeDisk(10, 1000);
  EXPECT_EQ(ids(tickAfter(2s)), Texts{"tool"});
  writeDisk(10, 999);
  EXPECT_TRUE(tickAfter(2s).empty());
}

TEST_P(ActivityMonitorTest, NetworkExactlyAtItsThresholdIsOver) {
  startTool(10, "tool");
  tick();
  finishNetworkRun({{10, 0}});
  tickAfter(2s);
  finishNetworkRun({{10, 204800}});
  EXPECT_EQ(ids(tickAfter(2s)), Texts{"tool"});
  finishNetworkRun({{10, 409599}});
  EXPECT_TRUE(tickAfter(2s).empty());
}

TEST_P(ActivityMonitorTest, AThresholdOfZeroFindsEveryApplicationThatWasThereBefore) {
  limits.cpuPercent = 0;
  startTool(10, "tool");
  tick();
  EXPECT_EQ(ids(tickAfter(2s)), Texts{"tool"});
}

// Runs.

TEST_P(ActivityMonitorTest, WithoutASustainTimeAnApplicationIsBusyOnItsFirstTickOverAThreshold) {
  startTool(10, "tool");
  tick();
  EXPECT_EQ(tickWith(10, 50).at(0).busyFor, 0);
}

TEST_P(ActivityMonitorTest, AnApplicationIsBusyOnTheFirstTickAtWhichTheSustainTimeHasPassed) {
  limits.sustainSeconds = 5;
  startTool(10, "tool");
  tick();
  EXPECT_TRUE(tickWith(10, 50).empty());
  EXPECT_EQ(ids(monitor.lastCandidates()), Texts{"tool"});
  EXPECT_TRUE(tickWith(10, 50).empty());
  EXPECT_TRUE(tickWith(10, 50).empty());
  EXPECT_EQ(monitor.lastCandidates().at(0).busyFor, 4);
  EXPECT_EQ(tickWith(10, 50).at(0).busyFor, 6);
  EXPECT_EQ(ids(monitor.lastBusy()), Texts{"tool"});
}

TEST_P(ActivityMonitorTest, AnApplicationBusyForExactlyTheSustainTimeIsBusy) {
  limits.sustainSeconds = 4;
  startTool(10, "tool");
  tick();
  tickWith(10, 50);
  EXPECT_TRUE(tickWith(10, 50).empty());
  EXPECT_EQ(ids(tickWith(10, 50)), Texts{"tool"});
}

TEST_P(ActivityMonitorTest, BreaksARunAfterOneTickUnderEveryThreshold) {
  startTool(10, "tool");
  tick();
  tickWith(10, 50);
  tickWith(10, 50);
  EXPECT_EQ(tickWith(10, 50).at(0).busyFor, 4);
  EXPECT_TRUE(tickWith(10, 1).empty());
  EXPECT_EQ(tickWith(10, 50).at(0).busyFor, 0);
}

TEST_P(ActivityMonitorTest, ARunGoesOnWhenAnotherThresholdTakesOver) {
  startTool(10, "tool");
  tick();
  tickWith(10, 50);
  writeDisk(10, 5000);
  EXPECT_EQ(tickAfter(2s).at(0).busyFor, 2);
}

TEST_P(ActivityMonitorTest, BreaksARunAfterOneTickOfBeingIgnored) {
  startTool(10, "tool");
  tick();
  tickWith(10, 50);
  limits.ignored = {"tool"};
  tickWith(10, 50);
  limits.ignored = {};
  EXPECT_EQ(tickWith(10, 50).at(0).busyFor, 0);
}

TEST_P(ActivityMonitorTest, AResetBreaksARun) {
  startTool(10, "tool");
  tick();
  tickWith(10, 50);
  monitor.reset();
  tickWith(10, 50);
  EXPECT_EQ(tickWith(10, 50).at(0).busyFor, 0);
}

// Ignored applications.

TEST_P(ActivityMonitorTest, AnIgnoredApplicationIsNeitherBusyNorACandidate) {
  limits.ignored = {"tool", "com.example.app"};
  startTool(10, "tool");
  startApp(11, "com.example.app", "App");
  tick();
  useCPU(11, 2s);
  EXPECT_TRUE(tickWith(10, 100).empty());
  EXPECT_TRUE(monitor.lastBusy().empty());
  EXPECT_TRUE(monitor.lastCandidates().empty());
}

TEST_P(ActivityMonitorTest, IgnoresKeysOnlyAndExactly) {
  limits.ignored = {"TOOL", "App", "app", "npm / node"};
  startTool(10, "tool");
  startApp(11, "com.example.app", "App");
  tick();
  useCPU(11, 1s);
  EXPECT_EQ(ids(tickWith(10, 80)), (Texts{"tool", "com.example.app"}));
}

TEST_P(ActivityMonitorTest, AnEmptyIgnoredSetExcludesNothing) {
  startTool(10, "tool");
  startTool(11, "another");
  tick();
  useCPU(11, 1s);
  EXPECT_EQ(ids(tickWith(10, 80)), (Texts{"tool", "another"}));
}

// The order of the results.

TEST_P(ActivityMonitorTest, OrdersBusyByCPUPlusNetworkAndCandidatesByCPU) {
  startTool(10, "A");
  startTool(11, "B");
  tick();
  finishNetworkRun({{11, 0}});
  tickAfter(2s);
  finishNetworkRun({{11, 81920}});  // 40 KB/s.
  useCPU(11, 0.6s);
  EXPECT_EQ(ids(tickWith(10, 50)), (Texts{"B", "A"}));
  EXPECT_EQ(ids(monitor.lastBusy()), (Texts{"B", "A"}));
  EXPECT_EQ(ids(monitor.lastCandidates()), (Texts{"A", "B"}));
}

TEST_P(ActivityMonitorTest, DiskTakesNoPartInEitherOrder) {
  startTool(10, "A");
  startTool(11, "B");
  tick();
  useCPU(11, 0.6s);
  writeDisk(11, 900000);
  EXPECT_EQ(ids(tickWith(10, 50)), (Texts{"A", "B"}));
  EXPECT_EQ(ids(monitor.lastCandidates()), (Texts{"A", "B"}));
}

TEST_P(ActivityMonitorTest, OrdersManyApplicationsTheBusiestFirst) {
  Texts expected;
  for (std::int32_t pid = 1; pid <= 30; ++pid) {
    startTool(pid, "tool" + std::to_string(pid));
    expected.insert(expected.begin(), "tool" + std::to_string(pid));
  }
  tick();
  for (std::int32_t pid = 1; pid <= 30; ++pid)
    useCPU(pid, Seconds(pid));
  EXPECT_EQ(ids(tickAfter(2s)), expected);
  EXPECT_EQ(ids(monitor.lastCandidates()), expected);
}

TEST_P(ActivityMonitorTest, ManyEquallyBusyApplicationsKeepTheOrderInWhichTheyAreVisited) {
  for (std::int32_t pid = 1; pid <= 40; ++pid)
    startTool(pid, "tool" + std::to_string(pid));
  tick();
  const auto tickWithTwoKinds = [this](Seconds even, Seconds odd) {
    for (std::int32_t pid = 1; pid <= 40; ++pid)
      useCPU(pid, pid % 2 == 0 ? even : odd);
    tickAfter(2s);
  };
  const auto isEven = [](const std::string& id) { return std::stoi(id.substr(4)) % 2 == 0; };
  tickWithTwoKinds(1s, 1s);
  Texts busy = ids(monitor.lastBusy());
  Texts candidates = ids(monitor.lastCandidates());
  // The order in which they are visited is unknown, but it is the same the next time.
  tickWithTwoKinds(1.5s, 1s);
  // Clang 14 cannot read the library's form of it for ranges.
  std::stable_partition(busy.begin(), busy.end(), isEven);
  std::stable_partition(candidates.begin(), candidates.end(), isEven);
  EXPECT_EQ(ids(monitor.lastBusy()), busy);
  EXPECT_EQ(ids(monitor.lastCandidates()), candidates);
}

TEST_P(ActivityMonitorTest, ReturnsWhatLastBusyKeeps) {
  startTool(10, "tool");
  tick();
  const std::vector<BusyApp> busy = tickWith(10, 50);
  EXPECT_EQ(busy, monitor.lastBusy());
  EXPECT_TRUE(tickWith(10, 1).empty());
  EXPECT_TRUE(monitor.lastBusy().empty());
  EXPECT_TRUE(monitor.lastCandidates().empty());
}

// Applications with assertions of their own.

TEST_P(ActivityMonitorTest, CollectsAssertingApplicationsInTheReadersOrderWhenAsked) {
  limits.honorAppAssertions = true;
  fakes.assertions.hold(501, "PreventSystemSleep");
  fakes.assertions.hold(500, "PreventSystemSleep");
  tick();
  EXPECT_EQ(monitor.assertingApps(), Texts{}) << "a tick that only primes asks nobody";
  EXPECT_EQ(fakes.calls->count("list assertions"), 0U);
  tickAfter(2s);
  EXPECT_EQ(monitor.assertingApps(), (Texts{"pid 500", "pid 501"}));
}

TEST_P(ActivityMonitorTest, AsksNobodyForAssertionsWhenNotAsked) {
  fakes.assertions.hold(500, "PreventSystemSleep");
  tick();
  tickAfter(2s);
  EXPECT_EQ(monitor.assertingApps(), Texts{});
  EXPECT_EQ(fakes.calls->count("list assertions"), 0U);
}

TEST_P(ActivityMonitorTest, EmptiesTheAssertingApplicationsWhenNoLongerAsked) {
  limits.honorAppAssertions = true;
  fakes.assertions.hold(500, "PreventSystemSleep");
  tick();
  tickAfter(2s);
  limits.honorAppAssertions = false;
  tickAfter(2s);
  EXPECT_EQ(monitor.assertingApps(), Texts{});
}

TEST_P(ActivityMonitorTest, LeavesIgnoredNamesOutOfTheAssertingApplications) {
  limits.honorAppAssertions = true;
  limits.ignored = {"com.example.player", "PID 501"};
  fakes.assertions.hold(500, "PreventSystemSleep");
  fakes.assertions.hold(501, "PreventSystemSleep");
  fakes.applications.add(500, "com.example.player", "Player");
  tick();
  tickAfter(2s);
  EXPECT_EQ(monitor.assertingApps(), Texts{"pid 501"});
}

TEST_P(ActivityMonitorTest, AResetLeavesTheAssertingApplicationsAsTheyWere) {
  limits.honorAppAssertions = true;
  fakes.assertions.hold(500, "PreventSystemSleep");
  tick();
  tickAfter(2s);
  fakes.assertions.holders.clear();
  monitor.reset();
  EXPECT_EQ(monitor.assertingApps(), Texts{"pid 500"});
  tickAfter(2s);
  EXPECT_EQ(monitor.assertingApps(), Texts{"pid 500"});
  tickAfter(2s);
  EXPECT_EQ(monitor.assertingApps(), Texts{}) << "the next tick with rates rewrites it";
}

// Ended processes, where the two tables differ.

TEST_F(ActivityMonitorOfLivingProcesses, ASumThatDropsIsNoActivityAndTheOtherSumsStillCount) {
  startApp(10, "com.example.app", "App");
  startApp(11, "com.example.app", "App");
  useCPU(11, 100s);
  tick();
  fakes.processes.remove(11);
  useCPU(10, 2s);
  writeDisk(10, 2000);
  const std::vector<BusyApp> busy = tickAfter(2s);
  ASSERT_EQ(busy.size(), 1U);
  EXPECT_DOUBLE_EQ(busy[0].cpuPercent, 0);
  EXPECT_DOUBLE_EQ(busy[0].diskKBps, 1000);
}

TEST_F(ActivityMonitorThatCountsWhole, ASumDoesNotDropWhenAProcessEndsSoTheOthersStillCount) {
  startApp(10, "com.example.app", "App");
  startApp(11, "com.example.app", "App");
  useCPU(11, 100s);
  tick();
  fakes.processes.remove(11);
  useCPU(10, 2s);
  writeDisk(10, 2000);
  const std::vector<BusyApp> busy = tickAfter(2s);
  ASSERT_EQ(busy.size(), 1U);
  EXPECT_DOUBLE_EQ(busy[0].cpuPercent, 100);
  EXPECT_DOUBLE_EQ(busy[0].diskKBps, 1000);
}

TEST_F(ActivityMonitorOfLivingProcesses, AnApplicationThatStartsAnewBetweenTwoTicksLosesItsSum) {
  startTool(10, "tool");
  useCPU(10, 100s);
  tick();
  fakes.processes.remove(10);
  startTool(12, "tool");
  EXPECT_TRUE(tickWith(12, 50).empty());
}

TEST_F(ActivityMonitorThatCountsWhole, AnApplicationThatStartsAnewBetweenTwoTicksGoesOn) {
  startTool(10, "tool");
  useCPU(10, 100s);
  tick();
  tickWith(10, 50);
  fakes.processes.remove(10);
  startTool(12, "tool");
  const std::vector<BusyApp> busy = tickWith(12, 50);
  ASSERT_EQ(busy.size(), 1U);
  EXPECT_DOUBLE_EQ(busy[0].cpuPercent, 50);
  EXPECT_EQ(busy[0].busyFor, 2);
}

TEST_F(ActivityMonitorOfLivingProcesses, AnEndedApplicationIsAbsentFromItsFirstTick) {
  limits.cpuPercent = 0;
  startTool(10, "tool");
  tick();
  EXPECT_EQ(ids(tickWith(10, 50)), Texts{"tool"});
  fakes.processes.remove(10);
  EXPECT_TRUE(tickAfter(2s).empty());
}

TEST_F(ActivityMonitorThatCountsWhole, AnEndedApplicationIsThereForTheTickThatFindsItEnded) {
  limits.cpuPercent = 0;
  startTool(10, "tool");
  tick();
  EXPECT_EQ(ids(tickWith(10, 50)), Texts{"tool"});
  fakes.processes.remove(10);
  EXPECT_EQ(ids(tickAfter(2s)), Texts{"tool"});
  EXPECT_TRUE(tickAfter(2s).empty());
}

TEST_F(ActivityMonitorOfLivingProcesses, BreaksARunWhenTheApplicationIsGoneForOneTick) {
  startTool(10, "tool");
  tick();
  tickWith(10, 50);
  fakes.processes.remove(10);
  EXPECT_TRUE(tickAfter(2s).empty());
  startTool(12, "tool");
  EXPECT_TRUE(tickWith(12, 50).empty()) << "it is new";
  EXPECT_EQ(tickWith(12, 50).at(0).busyFor, 0);
}

TEST_F(ActivityMonitorThatCountsWhole, BreaksARunWhenTheApplicationIsGoneForOneTick) {
  startTool(10, "tool");
  tick();
  tickWith(10, 50);
  fakes.processes.remove(10);
  EXPECT_TRUE(tickAfter(2s).empty());
  startTool(12, "tool");
  EXPECT_EQ(tickWith(12, 50).at(0).busyFor, 0) << "the tick before had what is left of it";
}

TEST_F(ActivityMonitorThatCountsWhole, AnApplicationThatWasGoneForTwoTicksIsNew) {
  startTool(10, "tool");
  tick();
  tickWith(10, 50);
  fakes.processes.remove(10);
  EXPECT_TRUE(tickAfter(2s).empty());
  EXPECT_TRUE(tickAfter(2s).empty());
  startTool(12, "tool");
  EXPECT_TRUE(tickWith(12, 50).empty());
  EXPECT_EQ(tickWith(12, 50).at(0).busyFor, 0);
}

// What a listener is told.

/// Keeps what each tick told.
class KeptInputs : public TickListener {
 public:
  void ticked(const TickInputs& inputs) override {
    moments.push_back(inputs.at);
    Texts names;
    for (const RawSample& sample : inputs.samples)
      names.emplace_back(std::string_view(sample.executable));
    programs.push_back(names);
    totals.push_back(inputs.netTotals);
    asserting.push_back(inputs.asserting ? std::optional(*inputs.asserting) : std::nullopt);
  }

  std::vector<Moment> moments;
  std::vector<Texts> programs;
  std::vector<NetworkTotals> totals;
  std::vector<std::optional<Texts>> asserting;
};

TEST_P(ActivityMonitorTest, TellsItsListenerWhatEachTickSaw) {
  KeptInputs kept;
  monitor.setListener(&kept);
  limits.honorAppAssertions = true;
  limits.ignored = {"pid 500"};
  startTool(10, "tool");
  fakes.assertions.hold(500, "PreventSystemSleep");
  tick();
  finishNetworkRun({{10, 7}});
  tickAfter(2s);
  EXPECT_EQ(kept.moments.at(1) - kept.moments.at(0), 2s);
  EXPECT_EQ(kept.programs, (std::vector<Texts>{{"tool"}, {"tool"}}));
  EXPECT_EQ(kept.totals.at(1), (NetworkTotals{{10, 7}})) << "those that the tick used";
  EXPECT_EQ(kept.asserting.at(0), std::nullopt) << "a tick that only primes asks nobody";
  EXPECT_EQ(kept.asserting.at(1), Texts{"pid 500"}) << "with the ignored ones";
  EXPECT_EQ(monitor.assertingApps(), Texts{});
}

TEST_P(ActivityMonitorTest, AsksForItsListenerEvenWhereAssertionsDoNotCount) {
  KeptInputs kept;
  monitor.setListener(&kept);
  fakes.assertions.hold(500, "PreventSystemSleep");
  tick();
  tickAfter(2s);
  EXPECT_EQ(kept.asserting.at(1), Texts{"pid 500"});
  EXPECT_EQ(monitor.assertingApps(), Texts{});
}

TEST_P(ActivityMonitorTest, TellsAListenerThatWasTakenBackNothing) {
  KeptInputs kept;
  monitor.setListener(&kept);
  monitor.setListener(nullptr);
  tick();
  EXPECT_TRUE(kept.moments.empty());
}

TEST_P(ActivityMonitorTest, LogsNothing) {
  startTool(10, "tool");
  tick();
  tickWith(10, 50);
  monitor.reset();
  EXPECT_TRUE(fakes.log.lines().empty());
}

}  // namespace
}  // namespace tidewell

// What the activity monitor finds in the conserved table, and in the plain table.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "Tests/Fakes/FakePorts.h"
#include "Tests/Tidewell/Accounting/SimulatedKernel.h"
#include "Tidewell/Accounting/ConservedProcesses.h"
#include "Tidewell/ActivityMonitor.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;

template <typename Table>
Ports onTable(Ports ports, Table& table) {
  ports.processTable = {std::shared_ptr<void>(), &table};
  return ports;
}

/// A machine with two processors. Every two seconds it is searched for work that has lasted for
/// ten.
class ConservedActivityTest : public testing::Test {
 protected:
  void tick() {
    fakes.clock.advance(2s);
    busy = monitor.tick(limits);
    plainBusy = plainMonitor.tick(limits);
  }

  /// Runs a command that begins and ends between two ticks.
  void runCommand(std::int32_t parent, std::uint64_t seconds) {
    const auto command = kernel.spawn(parent, "/usr/bin/command");
    kernel.work(command, seconds);
    kernel.endAndReap(command);
  }

  [[nodiscard]] bool isBusy(const std::string& name) const {
    return std::ranges::find(busy, name, &BusyApp::id) != busy.end();
  }

  std::int32_t startHelper(std::int32_t parent) {
    const auto helper = kernel.spawn(parent, "/opt/editor/helper");
    kernel.applications = {std::make_shared<FakeRunningApplication>(
        helper, "org.example.Editor", "Editor", std::make_shared<int>(0))};
    return helper;
  }

  FakePorts fakes;
  SimulatedKernel kernel;
  AccountDirectory accounts;
  ConservedProcesses table{{kernel, fakes.clock, accounts, 2}};
  Ports ports = onTable(fakes.ports, table);
  Ports plainPorts = onTable(fakes.ports, kernel);
  ActivityThresholds limits{15.0, 500.0, 100.0, 10, {}, false};
  ActivityMonitor monitor{ports};
  ActivityMonitor plainMonitor{plainPorts};
  std::vector<BusyApp> busy;
  std::vector<BusyApp> plainBusy;
};

TEST_F(ConservedActivityTest, ALoopOfShortCommandsIsBusyAfterTheSustainTime) {
  const auto script = kernel.spawn(1, "/home/somebody/convert-all");
  tick();
  for (int ticks = 1; ticks <= 30; ++ticks) {
    runCommand(script, 1);
    runCommand(script, 1);
    tick();
    ASSERT_EQ(busy.size(), ticks < 6 ? 0u : 1u) << "tick " << ticks;
    EXPECT_TRUE(plainBusy.empty()) << "tick " << ticks;
  }
  EXPECT_EQ(busy[0].id, "convert-all");
  EXPECT_DOUBLE_EQ(busy[0].cpuPercent, 100);
  EXPECT_DOUBLE_EQ(busy[0].busyFor, 58);
  EXPECT_TRUE(plainMonitor.lastCandidates().empty())
      << "the plain table never shows anything of the loop";
}

TEST_F(ConservedActivityTest, ALoopIsNotBusyAfterItsLastCommand) {
  const auto script = kernel.spawn(1, "/home/somebody/convert-all");
  tick();
  for (int ticks = 1; ticks <= 10; ++ticks) {
    runCommand(script, 2);
    tick();
  }
  ASSERT_EQ(busy.size(), 1u);
  tick();
  EXPECT_TRUE(busy.empty());
  EXPECT_TRUE(monitor.lastCandidates().empty());
}

TEST_F(ConservedActivityTest, ALoopOfLongerCommandsIsBusyWithoutAGap) {
  const auto script = kernel.spawn(1, "/home/somebody/copy-all");
  auto command = kernel.spawn(script, "/usr/bin/rsync");
  tick();
  for (int ticks = 1; ticks <= 30; ++ticks) {
    kernel.work(command, 1);
    if (ticks % 3 == 0) {
      // The next command works for the rest of the interval, so each tick sees one that works.
      kernel.endAndReap(command);
      command = kernel.spawn(script, "/usr/bin/rsync");
    }
    kernel.work(command, 1);
    tick();
    ASSERT_EQ(busy.size(), ticks < 6 ? 0u : 1u) << "tick " << ticks;
    EXPECT_TRUE(plainBusy.empty()) << "tick " << ticks;
  }
  EXPECT_EQ(busy[0].id, "rsync");
}

TEST_F(ConservedActivityTest, TheHelpersOfAnApplicationAreBusyUnderItsName) {
  const auto starter = kernel.spawn(1, "/opt/starter");
  auto helper = startHelper(starter);
  tick();
  for (int ticks = 1; ticks <= 10; ++ticks) {
    kernel.work(helper, 1);
    kernel.endAndReap(helper);
    helper = startHelper(starter);
    kernel.work(helper, 1);
    tick();
    EXPECT_TRUE(plainBusy.empty()) << "tick " << ticks;
  }
  ASSERT_EQ(busy.size(), 1u);
  EXPECT_EQ(busy[0].id, "org.example.Editor");
  EXPECT_EQ(busy[0].display, "Editor");
  EXPECT_DOUBLE_EQ(busy[0].cpuPercent, 100);
}

TEST_F(ConservedActivityTest, ADayOldJobThatCouldNotBeReadFillsOneTickWhenItIsReaped) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto job = kernel.spawn(shell, "/usr/bin/secret");
  kernel.processes.at(job).hidden = true;
  kernel.work(job, 4, 900'000'000'000);
  tick();
  kernel.endAndReap(job);
  tick();
  ASSERT_EQ(monitor.lastCandidates().size(), 1u);
  EXPECT_EQ(monitor.lastCandidates()[0].id, "sh");
  EXPECT_DOUBLE_EQ(monitor.lastCandidates()[0].cpuPercent, 200);
  EXPECT_DOUBLE_EQ(monitor.lastCandidates()[0].diskKBps, 19'531'250) << "20 GB/s";
  for (int ticks = 2; ticks < 10; ++ticks) {
    tick();
    EXPECT_TRUE(monitor.lastCandidates().empty()) << "tick " << ticks;
  }
}

TEST_F(ConservedActivityTest, ADayOldJobThatWasSeenIsNoWorkWhenItIsReaped) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto job = kernel.spawn(shell, "/usr/bin/job");
  kernel.work(job, 80'000, 900'000'000'000);
  tick();
  kernel.endAndReap(job);
  tick();
  EXPECT_TRUE(monitor.lastCandidates().empty());
}

TEST_F(ConservedActivityTest, AnEndedToolIsBusyNoLongerThanTheTickThatFindsItEnded) {
  limits.cpuPercent = 0;
  limits.sustainSeconds = 0;
  const auto tool = kernel.spawn(1, "/usr/bin/tool");
  tick();
  kernel.work(tool, 1);
  tick();
  EXPECT_TRUE(isBusy("tool"));
  kernel.work(tool, 1);
  kernel.endAndReap(tool);
  tick();
  EXPECT_TRUE(isBusy("tool")) << "because of what it used before it ended";
  for (int ticks = 0; ticks < 200; ++ticks) {
    tick();
    ASSERT_FALSE(isBusy("tool")) << "tick " << ticks;
  }
}

TEST_F(ConservedActivityTest, AToolThatIsStartedAgainHasRatesFromItsSecondTickOn) {
  limits.sustainSeconds = 0;
  auto tool = kernel.spawn(1, "/usr/bin/tool");
  kernel.work(tool, 100);
  tick();
  kernel.endAndReap(tool);
  tick();
  tick();
  tool = kernel.spawn(1, "/usr/bin/tool");
  kernel.work(tool, 1);
  tick();
  EXPECT_TRUE(busy.empty());
  kernel.work(tool, 1);
  tick();
  ASSERT_EQ(busy.size(), 1u);
  EXPECT_DOUBLE_EQ(busy[0].cpuPercent, 50);
  EXPECT_DOUBLE_EQ(busy[0].busyFor, 0);
}

TEST_F(ConservedActivityTest, EndedApplicationsDoNoWork) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  for (int number = 0; number < 300; ++number) {
    const auto job = kernel.spawn(shell, "/bin/job" + std::to_string(number));
    kernel.work(job, 3, 3'000'000'000);
    tick();
    kernel.endAndReap(job);
  }
  tick();
  for (int ticks = 0; ticks < 400; ++ticks) {
    tick();
    EXPECT_TRUE(monitor.lastCandidates().empty()) << "tick " << ticks;
  }
}

}  // namespace
}  // namespace tidewell

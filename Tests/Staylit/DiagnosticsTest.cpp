#include "Staylit/Diagnostics.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "Tests/Fakes/FakePorts.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;
using tidewell::Seconds;
using Integer = std::int64_t;
using Texts = std::vector<std::string>;

/// The beginning of the report on a machine without a battery, with the default settings.
const std::string kDefaultHead =
    "Staylit diagnostics \u2014 sampling for 16s\n"
    "\n"
    "Power:      no battery \u00B7 AC \u00B7 lowPower=false\n"
    "Thresholds: cpu>=15.0%  disk>=500.0KB/s  net>=100.0KB/s  sustained for 10s\n"
    "Grace:      120s after work stops\n"
    "\n";

const std::string kNothingWorks =
    "\n"
    "Over threshold (0):\n"
    "  nothing is working\n"
    "\n"
    "Qualified (sustained 10s \u2014 these hold sleep) (0):\n"
    "  nothing sustained long enough\n";

const std::string kNoAssertions =
    "\n"
    "Apps holding their own sleep assertion (0):\n"
    "  none\n";

class DiagnosticsTest : public testing::Test {
 protected:
  /// Lets process `pid` use this share of a core while the report samples.
  void work(std::int32_t pid, const std::string& path, double cpuPercent) {
    fakes.processes.add(pid, path);
    duringSleep.push_back([this, pid, cpuPercent] {
      const double nanos = cpuPercent / 100 * 2e9;
      fakes.processes.at(pid).usage.userTime += static_cast<std::uint64_t>(nanos);
    });
  }

  std::string report() {
    fakes.clock.whileSleeping = [this] {
      for (const auto& action : duringSleep)
        action();
    };
    Diagnostics::run(fakes.ports);
    return fakes.console.output;
  }

  /// The line of the report that begins with `beginning`.
  std::string line(const std::string& beginning) {
    const std::string text = "\n" + report();
    const std::size_t begin = text.find("\n" + beginning);
    if (begin == std::string::npos) return "no such line";
    return text.substr(begin + 1, text.find('\n', begin + 1) - begin - 1);
  }

  tidewell::FakePorts fakes;
  std::vector<std::function<void()>> duringSleep;
};

// Whole reports.

TEST_F(DiagnosticsTest, ReportsAMachineWithNothingToDo) {
  EXPECT_EQ(report(), kDefaultHead + kNothingWorks + kNoAssertions +
                          "\n"
                          "Verdict: would let the Mac sleep\n");
}

TEST_F(DiagnosticsTest, ReportsABlockedMachineThatWorks) {
  fakes.powerSources.setBattery(15);
  fakes.defaults.stored = {{"sustainSeconds", Integer{32}},
                           {"cpuThresholdPercent", 25.0},
                           {"diskThresholdKBps", 0.5},
                           {"netThresholdKBps", 33.25},
                           {"graceSeconds", Integer{5}}};
  work(10, "/Applications/Xcode.app/Contents/MacOS/Xcode", 143);
  fakes.applications.add(10, "com.apple.dt.Xcode", "Xcode");
  fakes.processes.add(11, "/opt/copier");
  // When the report ends, the tool has been copying for one tick only.
  duringSleep.push_back([this] {
    if (fakes.clock.sleeps.size() == 20) {
      fakes.processes.at(11).usage.diskBytesWritten += std::uint64_t{2} * 200 * 1024;
    }
  });
  // One sleep is a little shorter than the others, so the run lasts 37.9 s.
  duringSleep.push_back([this] {
    if (fakes.clock.sleeps.size() != 5) return;
    fakes.clock.advance(-0.1s);
    fakes.processes.at(10).usage.userTime -= 143'000'000;
  });
  fakes.assertions.hold(501, "PreventUserIdleSystemSleep");
  fakes.assertions.hold(500, "NoIdleSleepAssertion");
  fakes.applications.add(500, "com.example.player", "Player");

  EXPECT_EQ(report(),
            "Staylit diagnostics \u2014 sampling for 38s\n"
            "\n"
            "Power:      15% \u00B7 battery \u00B7 lowPower=false\n"
            "            holding is BLOCKED \u2014 battery below 20%\n"
            "Thresholds: cpu>=25.0%  disk>=0.5KB/s  net>=33.25KB/s  sustained for 32s\n"
            "Grace:      5s after work stops\n"
            "\n"
            "\n"
            "Over threshold (2):\n"
            "  Xcode                      143% CPU  [busy 37s]\n"
            "  copier                     200 KB/s disk  [busy 0s]\n"
            "\n"
            "Qualified (sustained 32s \u2014 these hold sleep) (1):\n"
            "  Xcode                      143% CPU  [busy 37s]\n"
            "\n"
            "Apps holding their own sleep assertion (2):\n"
            "  com.example.player\n"
            "  pid 501\n"
            "\n"
            "Verdict: WOULD HOLD sleep\n");
}

TEST_F(DiagnosticsTest, ReportsOneForeignAssertionAndNothingBusy) {
  fakes.assertions.hold(500, "PreventUserIdleSystemSleep");
  EXPECT_EQ(report(), kDefaultHead + kNothingWorks +
                          "\n"
                          "Apps holding their own sleep assertion (1):\n"
                          "  pid 500\n"
                          "\n"
                          "Verdict: WOULD HOLD sleep\n");
}

TEST_F(DiagnosticsTest, ReportsTrafficOfTheRunsThatEndWhileItSamples) {
  fakes.processes.add(10, "/usr/bin/curl");
  std::uint64_t total = 0;
  duringSleep.push_back([this, &total] {
    total += std::uint64_t{2} * 340 * 1024;
    fakes.network.setTotals({{10, total}});
    fakes.queues.runAll();
  });
  const std::string row = "  curl / wget                340 KB/s net  [busy 14s]\n";
  EXPECT_EQ(report(), kDefaultHead +
                          "\n"
                          "Over threshold (1):\n" +
                          row +
                          "\n"
                          "Qualified (sustained 10s \u2014 these hold sleep) (1):\n" +
                          row + kNoAssertions +
                          "\n"
                          "Verdict: WOULD HOLD sleep\n");
}

// The first lines.

TEST_F(DiagnosticsTest, PrintsASustainTimeOfZeroOrLessAsOneAndSamples14Seconds) {
  fakes.defaults.stored["sustainSeconds"] = Integer{0};
  EXPECT_EQ(line("Staylit diagnostics"), "Staylit diagnostics \u2014 sampling for 14s");
  EXPECT_EQ(line("Thresholds:"),
            "Thresholds: cpu>=15.0%  disk>=500.0KB/s  net>=100.0KB/s  sustained for 1s");
  EXPECT_EQ(line("Qualified"), "Qualified (sustained 1s \u2014 these hold sleep) (0):");
}

TEST_F(DiagnosticsTest, PrintsANegativeSustainTimeAsOne) {
  fakes.defaults.stored["sustainSeconds"] = Integer{-7};
  EXPECT_EQ(line("Staylit diagnostics"), "Staylit diagnostics \u2014 sampling for 14s");
  EXPECT_EQ(line("Qualified"), "Qualified (sustained 1s \u2014 these hold sleep) (0):");
}

TEST_F(DiagnosticsTest, Samples6SecondsBeyondTheSustainTime) {
  fakes.defaults.stored["sustainSeconds"] = Integer{30};
  EXPECT_EQ(line("Staylit diagnostics"), "Staylit diagnostics \u2014 sampling for 36s");
}

TEST_F(DiagnosticsTest, Samples15SecondsForASustainTimeOf9And14For8) {
  fakes.defaults.stored["sustainSeconds"] = Integer{9};
  EXPECT_EQ(line("Staylit diagnostics"), "Staylit diagnostics \u2014 sampling for 15s");
  fakes.console.output.clear();
  fakes.defaults.stored["sustainSeconds"] = Integer{8};
  EXPECT_EQ(line("Staylit diagnostics"), "Staylit diagnostics \u2014 sampling for 14s");
}

TEST_F(DiagnosticsTest, PrintsTheChargeOnBattery) {
  fakes.powerSources.setBattery(85);
  EXPECT_EQ(line("Power:"), "Power:      85% \u00B7 battery \u00B7 lowPower=false");
}

TEST_F(DiagnosticsTest, PrintsLowPowerModeAndThatItBlocks) {
  fakes.powerSources.lowPowerMode = true;
  EXPECT_EQ(line("Power:"), "Power:      no battery \u00B7 AC \u00B7 lowPower=true");
  EXPECT_EQ(line("            "), "            holding is BLOCKED \u2014 Low Power Mode is on");
}

TEST_F(DiagnosticsTest, PrintsNothingAboutABlockWhenNothingBlocks) {
  fakes.powerSources.setBattery(85);
  EXPECT_EQ(report().find("BLOCKED"), std::string::npos);
}

TEST_F(DiagnosticsTest, PrintsThresholdsInTheShortestFormThatReadsBack) {
  fakes.defaults.stored = {{"cpuThresholdPercent", 0.1},
                           {"diskThresholdKBps", 1000000.0},
                           {"netThresholdKBps", -33.333333333333336}};
  EXPECT_EQ(line("Thresholds:"),
            "Thresholds: cpu>=0.1%  disk>=1000000.0KB/s  net>=-33.333333333333336KB/s  "
            "sustained for 10s");
}

TEST_F(DiagnosticsTest, PrintsTheGraceAsItIsStored) {
  fakes.defaults.stored["graceSeconds"] = Integer{10000};
  EXPECT_EQ(line("Grace:"), "Grace:      10000s after work stops");
}

// The sampling.

TEST_F(DiagnosticsTest, TakesEightTicksInThe14SecondsOfAQuickMachine) {
  fakes.defaults.stored["sustainSeconds"] = Integer{1};
  report();
  EXPECT_EQ(fakes.calls->count("list processes"), 8U);
  EXPECT_EQ(fakes.clock.sleeps, std::vector<Seconds>(7, 2s));
}

TEST_F(DiagnosticsTest, TakesFewerTicksWhenEachIsSlow) {
  fakes.defaults.stored["sustainSeconds"] = Integer{1};
  fakes.processes.whileListing = [this] { fakes.clock.advance(1s); };
  report();
  // It ticks at 0, 3, 6, 9 and 12 s, and once more at the end.
  EXPECT_EQ(fakes.calls->count("list processes"), 6U);
  EXPECT_EQ(fakes.clock.sleeps.size(), 5U);
}

TEST_F(DiagnosticsTest, ReadsTheThresholdsAfreshBeforeEveryTick) {
  work(10, "/opt/tool", 50);
  duringSleep.push_back([this] {
    if (fakes.clock.sleeps.size() == 8) fakes.defaults.stored["ignoredApps"] = Texts{"tool"};
  });
  EXPECT_EQ(report(), kDefaultHead + kNothingWorks + kNoAssertions +
                          "\n"
                          "Verdict: would let the Mac sleep\n")
      << "the last of the nine ticks ignores it";
}

TEST_F(DiagnosticsTest, ReadsThePowerStateOnce) {
  report();
  EXPECT_EQ(fakes.calls->count("read the power source"), 1U);
}

TEST_F(DiagnosticsTest, PrintsItsFirstLinesBeforeItSamples) {
  std::string before;
  fakes.processes.whileListing = [&] {
    if (before.empty()) before = fakes.console.output;
  };
  report();
  EXPECT_EQ(before, kDefaultHead);
}

TEST_F(DiagnosticsTest, TakesNoAssertionWritesNoSettingAndLogsNothing) {
  work(10, "/opt/tool", 50);
  report();
  EXPECT_TRUE(fakes.power.calls.empty());
  EXPECT_TRUE(fakes.defaults.written.empty());
  EXPECT_TRUE(fakes.log.lines().empty());
  EXPECT_TRUE(fakes.mainLoop.timers.empty());
  EXPECT_EQ(fakes.sleepNotifications.observers(), 0U);
}

// The lists.

TEST_F(DiagnosticsTest, CountsTwentyApplicationsAndShowsTheTwelveBusiest) {
  std::string rows;
  for (std::int32_t pid = 11; pid <= 30; ++pid)
    work(pid, "/opt/tool" + std::to_string(pid), 20.0 + pid);
  for (int number = 30; number >= 19; --number) {
    rows += "  tool" + std::to_string(number) + "                     " +
            std::to_string(20 + number) + "% CPU  [busy 14s]\n";
  }
  EXPECT_EQ(report(), kDefaultHead + "\nOver threshold (20):\n" + rows +
                          "\nQualified (sustained 10s \u2014 these hold sleep) (20):\n" + rows +
                          kNoAssertions + "\nVerdict: WOULD HOLD sleep\n");
}

TEST_F(DiagnosticsTest, CutsOrPadsANameTo26Characters) {
  work(10, "/opt/abcdefghijklmnopqrstuvwxyz-and-more", 60);
  work(11, "/opt/abcdefghijklmnopqrstuvwxyz", 50);
  work(12, "/opt/\u00E4\u00F6\u00FC", 40);
  EXPECT_EQ(line("Over threshold"), "Over threshold (3):");
  const std::string text = fakes.console.output;
  EXPECT_NE(text.find("(3):\n"
                      "  abcdefghijklmnopqrstuvwxyz 60% CPU  [busy 14s]\n"
                      "  abcdefghijklmnopqrstuvwxyz 50% CPU  [busy 14s]\n"
                      "  \u00E4\u00F6\u00FC                        40% CPU  [busy 14s]\n"),
            std::string::npos)
      << text;
}

TEST_F(DiagnosticsTest, ListsEveryNameThatHoldsAnAssertion) {
  for (std::int32_t pid = 501; pid <= 515; ++pid)
    fakes.assertions.hold(pid, "PreventSystemSleep");
  const std::string text = report();
  EXPECT_NE(text.find("\nApps holding their own sleep assertion (15):\n  pid 501\n"),
            std::string::npos);
  EXPECT_NE(text.find("  pid 514\n  pid 515\n\nVerdict: "), std::string::npos);
}

TEST_F(DiagnosticsTest, ListsNobodyWhenTheServiceDoesNotAnswer) {
  fakes.assertions.hold(500, "PreventSystemSleep");
  fakes.assertions.answers = false;
  EXPECT_EQ(report(), kDefaultHead + kNothingWorks + kNoAssertions +
                          "\n"
                          "Verdict: would let the Mac sleep\n");
}

// The verdict.

TEST_F(DiagnosticsTest, WouldLetTheMachineSleepWhenNothingIsSustained) {
  fakes.processes.add(10, "/opt/tool");
  duringSleep.push_back([this] {
    if (fakes.clock.sleeps.size() >= 6) fakes.processes.at(10).usage.userTime += 1'000'000'000;
  });
  EXPECT_EQ(line("Over threshold"), "Over threshold (1):");
  fakes.console.output.clear();
  fakes.clock.sleeps.clear();
  EXPECT_EQ(line("Verdict:"), "Verdict: would let the Mac sleep");
}

TEST_F(DiagnosticsTest, WouldHoldThoughABlockForbidsIt) {
  fakes.powerSources.lowPowerMode = true;
  work(10, "/opt/tool", 50);
  EXPECT_EQ(line("Verdict:"), "Verdict: WOULD HOLD sleep");
}

TEST_F(DiagnosticsTest, WouldHoldForAForeignAssertionThatIsNotTrusted) {
  fakes.defaults.stored["honorAppAssertions"] = false;
  fakes.assertions.hold(500, "PreventSystemSleep");
  EXPECT_EQ(line("Verdict:"), "Verdict: WOULD HOLD sleep");
}

TEST_F(DiagnosticsTest, WouldHoldForAForeignAssertionThatIsIgnored) {
  fakes.defaults.stored["ignoredApps"] = Texts{"pid 500"};
  fakes.assertions.hold(500, "PreventSystemSleep");
  EXPECT_EQ(line("Verdict:"), "Verdict: WOULD HOLD sleep");
}

// The progress line.

TEST_F(DiagnosticsTest, WritesNothingToStandardErrorUnlessItIsATerminal) {
  fakes.console.outputTerminal = true;
  report();
  EXPECT_EQ(fakes.console.error, "");
}

TEST_F(DiagnosticsTest, ShowsItsProgressOnATerminalAndClearsItAtTheEnd) {
  fakes.defaults.stored["sustainSeconds"] = Integer{1};
  fakes.console.errorTerminal = true;
  report();
  EXPECT_EQ(fakes.console.error,
            "\r\x1b[KSampling [                    ] 14s left"
            "\r\x1b[KSampling [==                  ] 12s left"
            "\r\x1b[KSampling [=====               ] 10s left"
            "\r\x1b[KSampling [========            ] 8s left"
            "\r\x1b[KSampling [===========         ] 6s left"
            "\r\x1b[KSampling [==============      ] 4s left"
            "\r\x1b[KSampling [=================   ] 2s left"
            "\r\x1b[K");
}

TEST_F(DiagnosticsTest, ClearsItsProgressBeforeItPrintsWhatItSaw) {
  fakes.console.errorTerminal = true;
  report();
  const std::string& both = fakes.console.both;
  EXPECT_TRUE(both.starts_with(kDefaultHead + "\r\x1b[KSampling ["));
  EXPECT_NE(both.find("2s left\r\x1b[K\nOver threshold (0):\n"), std::string::npos) << both;
}

TEST_F(DiagnosticsTest, PrintsTheSameReportWithAndWithoutATerminal) {
  fakes.console.errorTerminal = true;
  fakes.console.outputTerminal = true;
  EXPECT_EQ(report(), kDefaultHead + kNothingWorks + kNoAssertions +
                          "\n"
                          "Verdict: would let the Mac sleep\n");
}

}  // namespace
}  // namespace staylit

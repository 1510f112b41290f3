#include "Tidewell/ClamshellController.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Fakes/FakePorts.h"

namespace tidewell {
namespace {

using Calls = std::vector<std::string>;

constexpr const char* kSleepOff =
    R"(do shell script "pmset -a disablesleep 1" with administrator privileges)";
constexpr const char* kSleepOn =
    R"(do shell script "pmset -a disablesleep 0" with administrator privileges)";
constexpr const char* kPath = "/Users/me/Library/LaunchAgents/com.staylit.clamshell-watchdog.plist";

class ClamshellControllerTest : public testing::Test {
 protected:
  ClamshellControllerTest() {
    ClamshellController::setOwnerProcessName("Staylit");
    ClamshellController::setWatchdogLabel("com.staylit.clamshell-watchdog");
  }

  /// The calls to the fakes, without those of the log.
  [[nodiscard]] Calls done() const {
    Calls calls = fakes.calls->all();
    std::erase_if(calls, [](const std::string& call) { return call.starts_with("make logger"); });
    return calls;
  }

  bool isDisabledWith(const std::string& output) {
    fakes.tasks.script.output = output;
    return ClamshellController::isDisabled();
  }

  FakePorts fakes;
};

TEST_F(ClamshellControllerTest, EnablingSwitchesSleepOffThenInstallsAndLoadsTheWatchdog) {
  EXPECT_TRUE(ClamshellController::enable());
  EXPECT_EQ(
      done(),
      (Calls{std::string("run script ") + kSleepOff, "create folder /Users/me/Library/LaunchAgents",
             std::string("write ") + kPath, std::string("launch /bin/launchctl load -w ") + kPath,
             "log clamshell sleep disabled"}));
  EXPECT_EQ(fakes.log.lines(), Calls{"info: clamshell sleep disabled"});
}

TEST_F(ClamshellControllerTest, PassesTheToolItsArgumentsOneByOne) {
  ClamshellController::enable();
  ASSERT_EQ(fakes.tasks.tasks.size(), 1U);
  EXPECT_EQ(fakes.tasks.tasks[0]->executable, "/bin/launchctl");
  EXPECT_EQ(fakes.tasks.tasks[0]->arguments, (Calls{"load", "-w", kPath}));
}

TEST_F(ClamshellControllerTest, WritesAWatchdogThatRestoresSleepOnceTheOwnerIsGone) {
  ClamshellController::enable();
  EXPECT_EQ(fakes.files.files[kPath],
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
            "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
            "<plist version=\"1.0\"><dict>\n"
            "  <key>Label</key><string>com.staylit.clamshell-watchdog</string>\n"
            "  <key>ProgramArguments</key>\n"
            "  <array>\n"
            "    <string>/bin/sh</string><string>-c</string>\n"
            "    <string>pgrep -x Staylit >/dev/null || /usr/bin/pmset -a disablesleep 0</string>\n"
            "  </array>\n"
            "  <key>RunAtLoad</key><true/>\n"
            "  <key>StartInterval</key><integer>60</integer>\n"
            "</dict></plist>");
}

TEST_F(ClamshellControllerTest, WritesNamesAsTheyAre) {
  ClamshellController::setOwnerProcessName("A & \"B\"");
  ClamshellController::setWatchdogLabel("a<b>&c");
  ClamshellController::enable();
  const std::string text = fakes.files.files.at("/Users/me/Library/LaunchAgents/a<b>&c.plist");
  EXPECT_NE(text.find("<string>a<b>&c</string>\n"), std::string::npos);
  EXPECT_NE(text.find("<string>pgrep -x A & \"B\" >/dev/null || "), std::string::npos);
}

TEST_F(ClamshellControllerTest, ReplacesAnEarlierWatchdog) {
  fakes.files.files[kPath] = "an older one";
  ClamshellController::enable();
  EXPECT_EQ(fakes.files.files.at(kPath).substr(0, 5), "<?xml");
}

TEST_F(ClamshellControllerTest, DecliningToEnableChangesAndLogsNothing) {
  fakes.scripts.outcome = FakePrivilegedScripts::declined();
  EXPECT_FALSE(ClamshellController::enable());
  EXPECT_EQ(done(), Calls{std::string("run script ") + kSleepOff});
  EXPECT_TRUE(fakes.files.files.empty());
  EXPECT_TRUE(fakes.log.lines().empty());
}

TEST_F(ClamshellControllerTest, LogsAnyOtherErrorOfTheScript) {
  fakes.scripts.outcome = FakePrivilegedScripts::failed(-1728, "{ no such thing }");
  EXPECT_FALSE(ClamshellController::enable());
  fakes.scripts.outcome = FakePrivilegedScripts::failed(std::nullopt, "{ }");
  EXPECT_FALSE(ClamshellController::disable());
  EXPECT_EQ(fakes.log.lines(), (Calls{"error: privileged command failed: { no such thing }",
                                      "error: privileged command failed: { }"}));
  EXPECT_TRUE(fakes.files.files.empty());
}

TEST_F(ClamshellControllerTest, LogsNothingAboutAScriptThatCannotBeMade) {
  fakes.scripts.outcome = FakePrivilegedScripts::unusable();
  EXPECT_FALSE(ClamshellController::enable());
  EXPECT_FALSE(ClamshellController::disable());
  EXPECT_TRUE(fakes.log.lines().empty());
  EXPECT_TRUE(fakes.files.files.empty());
}

TEST_F(ClamshellControllerTest, EnablesEvenIfTheWatchdogsFolderCannotBeMade) {
  fakes.files.createFailure = "The disk is full.";
  EXPECT_TRUE(ClamshellController::enable());
  EXPECT_EQ(fakes.log.lines(), (Calls{"error: watchdog install failed: The disk is full.",
                                      "info: clamshell sleep disabled"}));
  EXPECT_TRUE(fakes.files.files.empty());
  EXPECT_EQ(fakes.tasks.launches, 0);
}

TEST_F(ClamshellControllerTest, EnablesEvenIfTheWatchdogCannotBeWritten) {
  fakes.files.writeFailure = "You don\u2019t have permission.";
  EXPECT_TRUE(ClamshellController::enable());
  EXPECT_EQ(fakes.log.lines(),
            (Calls{"error: watchdog install failed: You don\u2019t have permission.",
                   "info: clamshell sleep disabled"}));
  EXPECT_EQ(fakes.tasks.launches, 0);
}

TEST_F(ClamshellControllerTest, EnablesEvenIfTheWatchdogCannotBeLoaded) {
  fakes.tasks.script.launchError = "no such file";
  EXPECT_TRUE(ClamshellController::enable());
  EXPECT_EQ(fakes.log.lines(), Calls{"info: clamshell sleep disabled"});
}

TEST_F(ClamshellControllerTest, DisablingRemovesTheWatchdogThenSwitchesSleepOn) {
  fakes.files.files[kPath] = "the watchdog";
  EXPECT_TRUE(ClamshellController::disable());
  EXPECT_EQ(done(), (Calls{std::string("launch /bin/launchctl unload -w ") + kPath,
                           std::string("remove ") + kPath, std::string("run script ") + kSleepOn,
                           "log clamshell sleep restored"}));
  EXPECT_EQ(fakes.log.lines(), Calls{"info: clamshell sleep restored"});
}

TEST_F(ClamshellControllerTest, DecliningToDisableLeavesNoWatchdog) {
  fakes.files.files[kPath] = "the watchdog";
  fakes.scripts.outcome = FakePrivilegedScripts::declined();
  EXPECT_FALSE(ClamshellController::disable());
  EXPECT_EQ(done(), (Calls{std::string("launch /bin/launchctl unload -w ") + kPath,
                           std::string("remove ") + kPath, std::string("run script ") + kSleepOn}));
  EXPECT_TRUE(fakes.files.files.empty());
}

TEST_F(ClamshellControllerTest, RunsNoToolToRemoveAWatchdogThatIsNotThere) {
  EXPECT_TRUE(ClamshellController::disable());
  EXPECT_EQ(done(), (Calls{std::string("run script ") + kSleepOn, "log clamshell sleep restored"}));
}

TEST_F(ClamshellControllerTest, LogsNothingAboutAWatchdogThatCannotBeUnloadedOrRemoved) {
  fakes.files.files[kPath] = "the watchdog";
  fakes.files.removeFails = true;
  fakes.tasks.script.launchError = "no such file";
  EXPECT_TRUE(ClamshellController::disable());
  EXPECT_EQ(fakes.log.lines(), Calls{"info: clamshell sleep restored"});
}

TEST_F(ClamshellControllerTest, ReadsTheSettingFromThePowerTool) {
  EXPECT_TRUE(isDisabledWith("System-wide power settings:\n SleepDisabled\t1\n"));
  ASSERT_EQ(fakes.tasks.tasks.size(), 1U);
  EXPECT_EQ(fakes.tasks.tasks[0]->executable, "/usr/bin/pmset");
  EXPECT_EQ(fakes.tasks.tasks[0]->arguments, Calls{"-g"});
  EXPECT_TRUE(fakes.scripts.sources.empty());
}

TEST_F(ClamshellControllerTest, AcceptsAnySpacingOfTheSetting) {
  EXPECT_TRUE(isDisabledWith(" SleepDisabled        1\n"));
  EXPECT_TRUE(isDisabledWith("SleepDisabled\t\t 1"));
  EXPECT_TRUE(isDisabledWith("SleepDisabled\r\n\v\f1"));
  EXPECT_TRUE(isDisabledWith("SleepDisabled 0\nSleepDisabled 1\n"));
  EXPECT_TRUE(isDisabledWith("SleepDisabled 12"));
}

TEST_F(ClamshellControllerTest, AcceptsNothingElseAsTheSetting) {
  EXPECT_FALSE(isDisabledWith("SleepDisabled\t\t0\n"));
  EXPECT_FALSE(isDisabledWith("SleepDisabled\t0\n standby 1\n"));
  EXPECT_FALSE(isDisabledWith("SleepDisabled1"));
  EXPECT_FALSE(isDisabledWith("SleepDisabled"));
  EXPECT_FALSE(isDisabledWith("SleepDisabled  "));
  EXPECT_FALSE(isDisabledWith("sleepdisabled\t1"));
  EXPECT_FALSE(isDisabledWith("hibernatemode\t3\n sleep\t1\n"));
  EXPECT_FALSE(isDisabledWith(""));
}

TEST_F(ClamshellControllerTest, CountsSleepAsOnWhenTheToolCannotTell) {
  EXPECT_FALSE(isDisabledWith("SleepDisabled\t1\n\xFF"));
  fakes.tasks.script.exceedsLimit = true;
  EXPECT_FALSE(isDisabledWith("SleepDisabled\t1\n"));
  fakes.tasks.script.launchError = "no such file";
  EXPECT_FALSE(isDisabledWith("SleepDisabled\t1\n"));
  EXPECT_TRUE(fakes.log.lines().empty());
}

TEST_F(ClamshellControllerTest, WaitsForTheToolToExit) {
  fakes.tasks.script.seenRunning = 3;
  EXPECT_TRUE(isDisabledWith("SleepDisabled\t1\n"));
  EXPECT_EQ(fakes.clock.sleeps.size(), 3U);
  EXPECT_EQ(fakes.tasks.tasks[0]->terminations, 0);
  EXPECT_FALSE(fakes.tasks.tasks[0]->alive);
}

TEST_F(ClamshellControllerTest, DoesNotWaitForeverForAToolThatHasEndedItsOutput) {
  fakes.tasks.script.seenRunning = FakeTaskLauncher::kRunsUntilTerminated;
  EXPECT_TRUE(isDisabledWith("SleepDisabled\t1\n"));
  EXPECT_EQ(fakes.clock.sleeps.size(), 2000U);
  EXPECT_FALSE(fakes.tasks.tasks[0]->alive);
}

TEST_F(ClamshellControllerTest, TellsTheOutcomeAtOnceWhereTheCommandWaitsForTheUser) {
  std::vector<bool> outcomes;
  ClamshellController::enable([&](bool isDone) { outcomes.push_back(isDone); });
  fakes.scripts.outcome = FakePrivilegedScripts::declined();
  ClamshellController::enable([&](bool isDone) { outcomes.push_back(isDone); });
  EXPECT_EQ(outcomes, (std::vector<bool>{true, false}));
}

TEST_F(ClamshellControllerTest, HasNothingToResumeWhereTheSettingOutlivesTheProgram) {
  EXPECT_TRUE(ClamshellController::resume());
  EXPECT_TRUE(done().empty());
}

TEST(ClamshellControllerNames, AreTheProcessAndTheLibraryByDefault) {
  FakePorts fakes;
  fakes.processInfo.name = "a host";
  EXPECT_EQ(ClamshellController::ownerProcessName(), "a host");
  EXPECT_EQ(ClamshellController::watchdogLabel(), "com.tidewell.clamshell-watchdog");
  EXPECT_EQ(ClamshellController::watchdogURL(),
            "/Users/me/Library/LaunchAgents/com.tidewell.clamshell-watchdog.plist");
}

TEST(ClamshellControllerNames, AskForTheProcessOnceAndOnlyIfNeeded) {
  FakePorts fakes;
  EXPECT_EQ(fakes.processInfo.asked, 0);
  ClamshellController::enable();
  ClamshellController::enable();
  EXPECT_EQ(fakes.processInfo.asked, 1);
}

TEST(ClamshellControllerNames, AskForNoProcessOnceOneIsSet) {
  FakePorts fakes;
  ClamshellController::setOwnerProcessName("Staylit");
  EXPECT_EQ(ClamshellController::ownerProcessName(), "Staylit");
  EXPECT_EQ(fakes.processInfo.asked, 0);
}

class ClamshellWithLidSwitch : public ClamshellControllerTest {
 protected:
  ClamshellWithLidSwitch() { fakes.useLidSwitch(); }
};

TEST_F(ClamshellWithLidSwitch, EnablesByHoldingItAndNothingElse) {
  EXPECT_TRUE(ClamshellController::enable());
  EXPECT_EQ(done(), (Calls{"hold lid without asking", "log clamshell sleep disabled"}));
  EXPECT_EQ(fakes.log.lines(), Calls{"info: clamshell sleep disabled"});
  EXPECT_TRUE(ClamshellController::isDisabled());
}

TEST_F(ClamshellWithLidSwitch, DisablesByReleasingItAndNothingElse) {
  fakes.lidSwitch.held = true;
  EXPECT_TRUE(ClamshellController::disable());
  EXPECT_EQ(done(), (Calls{"release lid", "log clamshell sleep restored"}));
  EXPECT_EQ(fakes.log.lines(), Calls{"info: clamshell sleep restored"});
  EXPECT_FALSE(ClamshellController::isDisabled());
}

TEST_F(ClamshellWithLidSwitch, LogsWhyItCouldNotBeHeldOrReleased) {
  fakes.lidSwitch.holdFailure = {false, "the desktop handles the lid itself"};
  fakes.lidSwitch.releaseFailure = {false, "no service"};
  EXPECT_FALSE(ClamshellController::enable());
  EXPECT_FALSE(ClamshellController::disable());
  EXPECT_EQ(fakes.log.lines(),
            (Calls{"error: privileged command failed: the desktop handles the lid itself",
                   "error: privileged command failed: no service"}));
}

TEST_F(ClamshellWithLidSwitch, LogsNothingWhenTheUserDeclines) {
  fakes.lidSwitch.holdFailure = {true, "dismissed"};
  fakes.lidSwitch.releaseFailure = {true, "dismissed"};
  EXPECT_FALSE(ClamshellController::enable());
  EXPECT_FALSE(ClamshellController::disable());
  EXPECT_TRUE(fakes.log.lines().empty());
}

TEST_F(ClamshellWithLidSwitch, ResumesWithoutAskingTheUser) {
  EXPECT_TRUE(ClamshellController::resume());
  EXPECT_EQ(done(), (Calls{"resume lid", "log clamshell sleep disabled"}));
  EXPECT_TRUE(fakes.lidSwitch.held);
}

TEST_F(ClamshellWithLidSwitch, AResumptionThatIsTriedAgainHasNotFailedYet) {
  fakes.lidSwitch.holdFailure = {false, "nobody answers", true};
  EXPECT_TRUE(ClamshellController::resume());
  EXPECT_FALSE(fakes.lidSwitch.held);
}

TEST_F(ClamshellWithLidSwitch, HearsLaterWhatTheUserAnswered) {
  std::vector<bool> outcomes;
  fakes.lidSwitch.takesItsTime = true;
  ClamshellController::enable([&](bool isDone) { outcomes.push_back(isDone); });
  EXPECT_TRUE(outcomes.empty());
  EXPECT_TRUE(fakes.log.lines().empty());
  fakes.lidSwitch.answer(std::nullopt);
  EXPECT_EQ(outcomes, std::vector<bool>{true});
  EXPECT_EQ(fakes.log.lines(), Calls{"info: clamshell sleep disabled"});
}

TEST_F(ClamshellWithLidSwitch, LogsNoRestorationOfSleepThatWasNeverSwitchedOff) {
  EXPECT_TRUE(ClamshellController::disable());
  EXPECT_EQ(done(), Calls{"release lid"});
  EXPECT_TRUE(fakes.log.lines().empty());
}

TEST_F(ClamshellWithLidSwitch, LogsWhyItCouldNotBeResumed) {
  fakes.lidSwitch.holdFailure = {false, "not allowed"};
  EXPECT_FALSE(ClamshellController::resume());
  EXPECT_EQ(fakes.log.lines(), Calls{"error: privileged command failed: not allowed"});
}

}  // namespace
}  // namespace tidewell

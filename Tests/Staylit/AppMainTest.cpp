#include "Staylit/AppMain.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Fakes/FakeApplication.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Fakes/FakeUserInterface.h"
#include "Tidewell/ClamshellController.h"
#include "Tidewell/Log.h"

namespace staylit {
namespace {

using Texts = std::vector<std::string>;
using tidewell::FakePorts;
using tidewell::InstalledPorts;
using tidewell::Log;

class AppMainTest : public testing::Test {
 protected:
  void TearDown() override { Log::setSubsystem("com.tidewell"); }

  int run(const Texts& arguments) {
    return AppMain(fakes.ports, application, userInterface).run(arguments);
  }

  /// Runs the entry with one argument and returns which of the two modes it chose.
  std::string modeOf(const std::string& argument) {
    FakePorts own;
    FakeApplication ownApplication;
    AppMain(own.ports, ownApplication, userInterface).run({"staylit", argument});
    const bool reported = own.console.output.starts_with("Staylit diagnostics");
    return std::string(reported ? "report" : "") + (ownApplication.runs == 1 ? "application" : "");
  }

  FakePorts fakes;
  FakeApplication application;
  FakeUserInterface userInterface{fakes.calls};
};

TEST_F(AppMainTest, RunsTheReportForDiagnoseAtAnyPosition) {
  EXPECT_EQ(run({"staylit", "--diagnose"}), 0);
  EXPECT_TRUE(fakes.console.output.starts_with("Staylit diagnostics"));
  fakes.console.output.clear();
  EXPECT_EQ(run({"--diagnose"}), 0);
  EXPECT_TRUE(fakes.console.output.starts_with("Staylit diagnostics"));
  fakes.console.output.clear();
  EXPECT_EQ(run({"staylit", "a", "--diagnose", "b"}), 0);
  EXPECT_TRUE(fakes.console.output.starts_with("Staylit diagnostics"));
  EXPECT_EQ(application.runs, 0);
}

TEST_F(AppMainTest, StartsTheApplicationForAnyOtherArgument) {
  EXPECT_EQ(modeOf("--diagnose"), "report");
  EXPECT_EQ(modeOf("--diagnose-now"), "application");
  EXPECT_EQ(modeOf("--diagnose=1"), "application");
  EXPECT_EQ(modeOf("-diagnose"), "application");
  EXPECT_EQ(modeOf("diagnose"), "application");
  EXPECT_EQ(modeOf("--DIAGNOSE"), "application");
  EXPECT_EQ(modeOf("--Diagnose"), "application");
  EXPECT_EQ(modeOf(" --diagnose"), "application");
  EXPECT_EQ(modeOf("--help"), "application");
  EXPECT_EQ(modeOf(""), "application");
}

TEST_F(AppMainTest, StartsTheApplicationWithoutArguments) {
  EXPECT_EQ(run({}), 0);
  EXPECT_EQ(run({"staylit"}), 0);
  EXPECT_EQ(application.runs, 2);
  EXPECT_EQ(fakes.console.output, "");
}

TEST_F(AppMainTest, LeavesVerboseSwitchedOnAfterAReport) {
  run({"staylit", "--diagnose"});
  EXPECT_EQ(fakes.defaults.stored.at("verbose"), tidewell::PropertyValue(true));
  EXPECT_EQ(fakes.defaults.written, Texts{"verbose"});
  EXPECT_FALSE(Log::verbose()) << "the logging flag of that name is another matter";
}

TEST_F(AppMainTest, WritesNoSettingForTheApplication) {
  run({"staylit"});
  EXPECT_TRUE(fakes.defaults.written.empty());
}

TEST_F(AppMainTest, NamesTheLogsSubsystemBeforeAnythingElse) {
  run({"staylit", "--diagnose"});
  EXPECT_EQ(Log::subsystem(), "com.staylit.app");
  EXPECT_EQ(fakes.calls->all().front(), "make logger com.staylit.app");
}

TEST_F(AppMainTest, NamesTheLogsSubsystemBeforeTheApplicationRuns) {
  std::string subsystem;
  application.whileRunning = [&](ApplicationDelegate&) { subsystem = Log::subsystem(); };
  run({"staylit"});
  EXPECT_EQ(subsystem, "com.staylit.app");
}

TEST_F(AppMainTest, NamesTheOwnerAndTheWatchdogBeforeTheApplicationRuns) {
  std::string owner;
  std::string label;
  application.whileRunning = [&](ApplicationDelegate&) {
    owner = tidewell::ClamshellController::ownerProcessName();
    label = tidewell::ClamshellController::watchdogLabel();
  };
  run({"staylit"});
  EXPECT_EQ(owner, "Staylit");
  EXPECT_EQ(label, "com.staylit.clamshell-watchdog");
}

TEST_F(AppMainTest, NamesTheOwnerAndTheWatchdogForAReportToo) {
  std::string owner;
  std::string label;
  fakes.processes.whileListing = [&] {
    owner = tidewell::ClamshellController::ownerProcessName();
    label = tidewell::ClamshellController::watchdogLabel();
  };
  run({"staylit", "--diagnose"});
  EXPECT_EQ(owner, "Staylit");
  EXPECT_EQ(label, "com.staylit.clamshell-watchdog");
}

TEST_F(AppMainTest, ShowsNothingForAReport) {
  run({"staylit", "--diagnose"});
  EXPECT_EQ(fakes.calls->count("make status item"), 0U);
  EXPECT_TRUE(userInterface.windows.empty());
}

TEST_F(AppMainTest, ShowsTheStatusItemOnceLaunchingHasFinished) {
  application.whileRunning = [&](ApplicationDelegate& delegate) {
    EXPECT_EQ(userInterface.menu, nullptr);
    delegate.applicationDidFinishLaunching();
    EXPECT_NE(userInterface.menu, nullptr);
  };
  run({"staylit"});
  EXPECT_EQ(userInterface.menu, nullptr) << "after its end";
}

TEST_F(AppMainTest, SwitchesVerboseOnBeforeTheReport) {
  const Texts inOrder = {"make logger com.staylit.app", "register defaults", "write verbose",
                         "read Low Power Mode"};
  run({"staylit", "--diagnose"});
  EXPECT_EQ(fakes.calls->only(inOrder), inOrder);
}

TEST_F(AppMainTest, FinishesWritingSettingsBeforeItEnds) {
  run({"staylit", "--diagnose"});
  EXPECT_EQ(fakes.calls->all().back(), "finish writing");
  run({"staylit"});
  EXPECT_EQ(fakes.calls->count("finish writing"), 2U);
}

TEST_F(AppMainTest, ReleasesTheHoldBeforeItWaitsForTheDisk) {
  application.whileRunning = [&](ApplicationDelegate& delegate) {
    delegate.applicationDidFinishLaunching();
    delegate.applicationWillTerminate();
    EXPECT_EQ(fakes.calls->count("finish writing"), 0U);
  };
  run({"staylit"});
  EXPECT_EQ(fakes.calls->count("finish writing"), 1U);
}

TEST_F(AppMainTest, ObservesNothingAndSchedulesNothingForAReport) {
  run({"staylit", "--diagnose"});
  EXPECT_TRUE(fakes.mainLoop.timers.empty());
  EXPECT_EQ(fakes.sleepNotifications.observers(), 0U);
  EXPECT_TRUE(fakes.power.calls.empty());
  EXPECT_TRUE(fakes.log.lines().empty());
}

TEST_F(AppMainTest, InstallsItsPortsForAsLongAsItRuns) {
  FakePorts others;
  ASSERT_EQ(&InstalledPorts::current(), &others.ports);
  const tidewell::Ports* during = nullptr;
  application.whileRunning = [&](ApplicationDelegate&) { during = &InstalledPorts::current(); };
  run({"staylit"});
  EXPECT_EQ(during, &fakes.ports);
  EXPECT_EQ(&InstalledPorts::current(), &others.ports);
}

TEST_F(AppMainTest, StartsTheEngineOnceLaunchingHasFinished) {
  application.whileRunning = [&](ApplicationDelegate& delegate) {
    EXPECT_TRUE(fakes.mainLoop.timers.empty());
    delegate.applicationDidFinishLaunching();
    EXPECT_EQ(fakes.mainLoop.timers.size(), 1U);
    delegate.applicationWillTerminate();
  };
  EXPECT_EQ(run({"staylit"}), 0);
}

TEST_F(AppMainTest, HoldsNothingAfterItsEnd) {
  application.whileRunning = [&](ApplicationDelegate& delegate) {
    delegate.applicationDidFinishLaunching();
    EXPECT_EQ(fakes.power.live.size(), 1U);
  };
  run({"staylit"});
  EXPECT_TRUE(fakes.power.live.empty()) << "even if nobody told it that it terminates";
}

}  // namespace
}  // namespace staylit

#include "Staylit/StatusPrinter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/FakeConsole.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;
using Form = StatusRequest::Form;
using State = StatusReport::State;
using Arguments = std::vector<std::string>;

/// The fake clock shows 09:00:00 UTC.
class StatusPrinterTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(setenv("TZ", "UTC0", 1), 0); }

  StatusPrinter printer(Form form, bool follows) { return {{form, follows}, console, clock}; }

  StatusReport idle() {
    StatusReport report;
    report.summary = "Idle";
    report.since = clock.wallTime();
    report.power = {true, 100, false, false};
    return report;
  }
  StatusReport holding() {
    StatusReport report = idle();
    report.state = State::holding;
    report.summary = "Awake for A";
    report.names = {"A"};
    report.services = {{"org.example.Sleep", std::nullopt}};
    return report;
  }

  /// What was printed since the last call.
  std::string printed() { return std::exchange(console.output, ""); }

  tidewell::FakeConsole console;
  tidewell::FakeClock clock;
};

TEST_F(StatusPrinterTest, PrintsTheWholeReportOnce) {
  auto once = printer(Form::text, false);
  clock.advance(5s);
  once.answered(idle());
  EXPECT_EQ(printed(),
            "Idle\nSince:      09:00:05 (0 s)\nPower:      no battery \u00B7 AC \u00B7 "
            "lowPower=false\n");
}

TEST_F(StatusPrinterTest, PrintsALineWithTheTimeForEachChange) {
  auto follower = printer(Form::text, true);
  follower.answered(idle());
  clock.advance(61s);
  follower.answered(holding());
  EXPECT_EQ(printed(), "09:00:00  Idle\n09:01:01  Awake for A\n");
  follower.answered(holding());
  EXPECT_EQ(printed(), "") << "no change";
}

TEST_F(StatusPrinterTest, PrintsAnObjectForEachChange) {
  auto follower = printer(Form::json, true);
  follower.answered(idle());
  EXPECT_EQ(printed(), idle().json(clock.wallTime()) + "\n");
  follower.answered(idle());
  EXPECT_EQ(printed(), "");
  follower.answered(holding());
  EXPECT_EQ(printed(), holding().json(clock.wallTime()) + "\n");
}

TEST_F(StatusPrinterTest, SaysThatNoneRuns) {
  auto once = printer(Form::text, false);
  once.foundNone();
  EXPECT_EQ(printed(), "Staylit does not run\n");
  auto json = printer(Form::json, false);
  json.foundNone();
  EXPECT_EQ(printed(),
            R"({"version":1,"state":"absent","held":false,"summary":"Staylit does not run"})"
            "\n");
}

TEST_F(StatusPrinterTest, SaysOnceThatItHasEndedAndAgainWhatTheNextOneDoes) {
  auto follower = printer(Form::text, true);
  follower.answered(idle());
  printed();
  follower.foundNone();
  follower.foundNone();
  EXPECT_EQ(printed(), "09:00:00  Staylit does not run\n");
  follower.answered(idle());
  EXPECT_EQ(printed(), "09:00:00  Idle\n");
  follower.foundNone();
  EXPECT_EQ(printed(), "09:00:00  Staylit does not run\n");
}

TEST_F(StatusPrinterTest, TellsOfTroubleOnStandardError) {
  auto once = printer(Form::json, false);
  once.failed("the bus does not answer");
  EXPECT_EQ(printed(), "");
  EXPECT_EQ(console.error, "staylit: the bus does not answer\n");
}

TEST_F(StatusPrinterTest, EndsWithWhatItPrintedLast) {
  auto follower = printer(Form::text, true);
  EXPECT_EQ(follower.exitStatus(), 2) << "nothing was found out";
  follower.answered(holding());
  EXPECT_EQ(follower.exitStatus(), 0);
  follower.answered(idle());
  EXPECT_EQ(follower.exitStatus(), 1);
  follower.foundNone();
  EXPECT_EQ(follower.exitStatus(), 3);
  follower.failed("x");
  EXPECT_EQ(follower.exitStatus(), 2);
}

TEST_F(StatusPrinterTest, AHoldThatNobodyGrantsIsNone) {
  auto once = printer(Form::text, false);
  StatusReport report = holding();
  report.services.clear();
  once.answered(report);
  EXPECT_EQ(once.exitStatus(), 1);
}

TEST(StatusRequest, AsksForTheStatusInTheFormThatIsWanted) {
  EXPECT_EQ(StatusRequest::in({"staylit", "--status"}), (StatusRequest{Form::text, false}));
  EXPECT_EQ(StatusRequest::in({"staylit", "--json", "--status"}),
            (StatusRequest{Form::json, false}));
  EXPECT_EQ(StatusRequest::in({"staylit", "--status", "--follow"}),
            (StatusRequest{Form::text, true}));
  EXPECT_EQ(StatusRequest::in({"staylit", "--status", "--pause", "--follow", "--json"}),
            (StatusRequest{Form::json, true}));
  EXPECT_EQ(StatusRequest::in({"staylit", "--system", "--status"}),
            (StatusRequest{Form::text, false, true}));
}

TEST(StatusRequest, AsksForNoStatusUnlessToldTo) {
  for (const Arguments& others : {Arguments{"staylit"}, Arguments{"staylit", "--json", "--follow"},
                                  Arguments{"staylit", "--Status"}, Arguments{"staylit", "status"},
                                  Arguments{"staylit", "--status", "--diagnose"}}) {
    EXPECT_EQ(StatusRequest::in(others), std::nullopt) << others.back();
  }
}

}  // namespace
}  // namespace staylit

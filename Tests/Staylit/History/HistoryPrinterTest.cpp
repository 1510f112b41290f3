#include "Staylit/History/HistoryPrinter.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "Staylit/JsonValue.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Staylit/History/HistoryScript.h"

namespace staylit {
namespace {

using HistoryArguments = std::vector<std::string>;

class HistoryPrinterTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(setenv("TZ", "UTC0", 1), 0);
    tzset();
  }

  int print(const HistoryArguments& options) {
    HistoryArguments arguments{"staylit", "--history"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    source.history = script.history;
    return HistoryPrinter::print(source, *HistoryRequest::in(arguments), console, {});
  }

  HistoryScript script;
  HistoryPrinter::Source source{{}, "/home/u/history", "", true};
  [[nodiscard]] std::string firstLine() const {
    return console.output.substr(0, console.output.find('\n'));
  }

  tidewell::FakeConsole console;
};

TEST(HistoryRequest, IsAbsentUnlessItIsAskedFor) {
  EXPECT_EQ(HistoryRequest::in({"staylit"}), std::nullopt);
  EXPECT_EQ(HistoryRequest::in({"staylit", "--status", "--json"}), std::nullopt);
  EXPECT_EQ(HistoryRequest::in({"staylit", "--history", "--diagnose"}), std::nullopt);
}

TEST(HistoryRequest, HasItsFormAndRange) {
  using Form = HistoryRequest::Form;
  EXPECT_EQ(HistoryRequest::in({"staylit", "--history"}),
            (HistoryRequest{Form::text, "today", ""}));
  EXPECT_EQ(
      HistoryRequest::in({"staylit", "--since", "7d", "--history", "--json", "--until", "1d"}),
      (HistoryRequest{Form::json, "7d", "1d"}));
}

TEST_F(HistoryPrinterTest, PrintsToday) {
  script.start(0).hold(10, "make").begin(10, "make").add(20, HistoryEvent::Stopped{});
  script.history.now = HistoryScript::at(20);
  EXPECT_EQ(print({}), 0);
  EXPECT_EQ(firstLine(), "Held for 10 min 0 s today: make 10 min 0 s.");
  EXPECT_EQ(console.error, "");
}

TEST_F(HistoryPrinterTest, PrintsTheRangeThatWasAskedFor) {
  script.start(0).hold(10, "make").add(20, HistoryEvent::Stopped{});
  EXPECT_EQ(print({"--since", "2026-11-22 00:15", "--until", "2026-11-22 00:18"}), 0);
  EXPECT_EQ(firstLine(),
            "Held for 3 min 0 s from 2026-11-22 00:15 to 2026-11-22 00:18: no work, only the wait "
            "for it.");
}

TEST_F(HistoryPrinterTest, ComplainsOfTimesThatItDoesNotUnderstand) {
  script.start(0);
  EXPECT_EQ(print({"--since", "soon"}), 2);
  EXPECT_EQ(console.error,
            "staylit: --since does not understand \"soon\": it may be 2026-11-21, \"2026-11-21 "
            "14:30\", 14:30, today, yesterday, now, or 7d, 12h or 30m ago\n");
  console.error.clear();
  EXPECT_EQ(print({"--until", "2026-02-30"}), 2);
  EXPECT_TRUE(console.error.starts_with("staylit: --until does not understand \"2026-02-30\""));
  console.error.clear();
  EXPECT_EQ(print({"--since", "today", "--until", "yesterday"}), 2);
  EXPECT_EQ(console.error, "staylit: nothing lies between today and yesterday\n");
  EXPECT_EQ(console.output, "");
}

TEST_F(HistoryPrinterTest, SaysThatThereIsNoHistory) {
  EXPECT_EQ(print({}), 1);
  EXPECT_EQ(firstLine(),
            "There is no history in /home/u/history. Staylit keeps one while it runs.");
}

TEST_F(HistoryPrinterTest, SaysHowToSwitchItOn) {
  source.isSwitchedOn = false;
  EXPECT_EQ(print({}), 1);
  EXPECT_EQ(
      console.error,
      "The history is switched off: set enabled = true in the table [history] of the settings "
      "file.\n");
}

TEST_F(HistoryPrinterTest, SaysWhyItCannotBeRead) {
  source.error = "Permission denied";
  EXPECT_EQ(print({}), 2);
  EXPECT_EQ(console.error,
            "staylit: the history in /home/u/history cannot be read: Permission denied\n");
}

TEST_F(HistoryPrinterTest, PrintsJson) {
  script.start(0).battery(0, 80).hold(10, "make").begin(10, "make", {90, 1, 2});
  script.finish(20, "make").wind(20).state(22, StatusReport::State::blocked, "low");
  script.add(23, HistoryEvent::AskingChanged{{"mpv"}}).add(24, HistoryEvent::LidMoved{true});
  script.add(25, HistoryEvent::SettingChanged{"verbose", "false", "true"});
  script.add(26, HistoryEvent::FellAsleep{}).add(27, HistoryEvent::WokeUp{});
  script.add(30, HistoryEvent::Stopped{});
  EXPECT_EQ(print({"--json", "--since", "2026-11-22"}), 0);
  const auto json = JsonValue::read(firstLine());
  ASSERT_TRUE(json) << firstLine();
  EXPECT_EQ(json->member("version")->number(), 1);
  EXPECT_EQ(*json->member("from")->text(), "2026-11-22T00:00:00Z");
  EXPECT_EQ(json->member("running")->flag(), false);
  EXPECT_EQ(json->member("sums")->member("heldSeconds")->number(), 720);
  const JsonValue& hold = json->member("holds")->list()->at(0);
  EXPECT_EQ(*hold.member("to")->text(), "2026-11-22T00:22:00Z");
  EXPECT_EQ(hold.member("parts")->list()->size(), 2U);
  EXPECT_EQ(*hold.member("parts")->list()->at(0).member("reason")->text(), "make is working");
  const JsonValue& work = json->member("works")->list()->at(0);
  EXPECT_EQ(work.member("onBatterySeconds")->number(), 600);
  EXPECT_EQ(work.member("peak")->member("cpuPercent")->number(), 150);
  for (const char* list :
       {"runs", "askings", "blocks", "sleeps", "charges", "onBattery", "lidClosed", "settings"}) {
    EXPECT_EQ(json->member(list)->list()->size(), 1U) << list;
  }
  EXPECT_EQ(json->member("events")->list()->size(), 13U);
}

TEST_F(HistoryPrinterTest, PrintsJsonWithoutAHistory) {
  EXPECT_EQ(print({"--json"}), 1);
  EXPECT_TRUE(JsonValue::read(firstLine()));
}

}  // namespace
}  // namespace staylit

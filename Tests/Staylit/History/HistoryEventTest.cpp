#include "Staylit/History/HistoryEvent.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <string>
#include <vector>

namespace staylit {
namespace {

using namespace std::chrono_literals;
using EngineState = StatusReport::State;

/// 22 November 2026, 09:31:04.125 UTC; the machine was started an hour before.
HistoryEvent eventOf(HistoryEvent::What what) {
  const auto day = std::chrono::sys_days(std::chrono::year(2026) / 11 / 22);
  return {day + 9h + 31min + 4s + 125ms, tidewell::Moment(1h + 7ms), 77, std::move(what)};
}

constexpr const char* kStart = R"({"at":"2026-11-22T09:31:04.125Z","run":77,"ms":3600007,)";

struct Pair {
  HistoryEvent::What what;
  std::string members;
};

std::vector<Pair> allKinds() {
  const auto seen = std::chrono::sys_days(std::chrono::year(2026) / 11 / 21) + 23h + 59min + 1ms;
  return {
      {HistoryEvent::Started{"0.1.0", std::nullopt}, R"("kind":"started","version":"0.1.0")"},
      {HistoryEvent::Started{"0.1.0", seen},
       R"("kind":"started","version":"0.1.0","lastSeen":"2026-11-21T23:59:00.001Z")"},
      {HistoryEvent::Stopped{}, R"("kind":"stopped")"},
      {HistoryEvent::StateChanged{
           EngineState::holding, "a and 1 more are working", {"a", "b"}, {"s"}},
       R"("kind":"state","state":"holding","reason":"a and 1 more are working",)"
       R"("names":["a","b"],"services":["s"])"},
      {HistoryEvent::StateChanged{EngineState::idle, "", {}, {}},
       R"("kind":"state","state":"idle")"},
      {HistoryEvent::WorkBegan{
           "org.a", "A", tidewell::AppCategory::videoAudio, 10.5, {187.2, 0, 3.1}},
       R"("kind":"workBegan","key":"org.a","name":"A","category":"Video & Audio",)"
       R"("overFor":10.5,"figures":[187.2,0.0,3.1])"},
      {HistoryEvent::WorkEnded{"org.a", {200, 5, 1}, {100.5, 2, 0.5}},
       R"("kind":"workEnded","key":"org.a","peak":[200.0,5.0,1.0],"mean":[100.5,2.0,0.5])"},
      {HistoryEvent::AskingChanged{{"mpv"}}, R"("kind":"asking","names":["mpv"])"},
      {HistoryEvent::AskingChanged{}, R"("kind":"asking","names":[])"},
      {HistoryEvent::AskingChanged{{"a", "b"}, {"", "Backup tool: Nightly"}},
       R"("kind":"asking","names":["a","b"],"words":["","Backup tool: Nightly"])"},
      {HistoryEvent::PowerChanged{{false, 85, true, true}},
       R"("kind":"power","onAC":false,"hasBattery":true,"percent":85,"lowPowerMode":true)"},
      {HistoryEvent::FellAsleep{}, R"("kind":"slept")"},
      {HistoryEvent::WokeUp{}, R"("kind":"woke")"},
      {HistoryEvent::LidMoved{true}, R"("kind":"lid","closed":true)"},
      {HistoryEvent::LidHoldChanged{false}, R"("kind":"lidHold","held":false)"},
      {HistoryEvent::SettingChanged{"graceSeconds", "120", "60"},
       R"("kind":"setting","key":"graceSeconds","from":"120","to":"60")"},
      {HistoryEvent::ClockSet{}, R"("kind":"clockSet")"},
  };
}

TEST(HistoryEvent, IsOneLineOfJson) {
  for (const Pair& pair : allKinds())
    EXPECT_EQ(textOf(eventOf(pair.what)), kStart + pair.members + "}");
}

TEST(HistoryEvent, IsReadBackAsItWasWritten) {
  for (const Pair& pair : allKinds())
    EXPECT_EQ(historyEvent(kStart + pair.members + "}"), eventOf(pair.what)) << pair.members;
}

TEST(HistoryEvent, EscapesWhatWouldEndItsLine) {
  const std::string text = textOf(eventOf(HistoryEvent::AskingChanged{{"a\nb\"c"}}));
  EXPECT_EQ(text.find('\n'), std::string::npos);
  EXPECT_NE(text.find(R"("a\u000ab\"c")"), std::string::npos) << text;
}

TEST(HistoryEvent, ReadsFiguresThatAreNoNumbersAsNothing) {
  const double infinite = std::numeric_limits<double>::infinity();
  const auto read =
      historyEvent(textOf(eventOf(HistoryEvent::WorkEnded{"a", {infinite, 1, 1}, {}})));
  ASSERT_TRUE(read);
  EXPECT_EQ(std::get<HistoryEvent::WorkEnded>(read->what).peak, (WorkFigures{0, 1, 1}));
}

TEST(HistoryEvent, CleansTextsThatSomebodyElseWrote) {
  const auto read =
      historyEvent(kStart + std::string(R"("kind":"asking","names":["a\u001b[31m"]})"));
  ASSERT_TRUE(read);
  EXPECT_EQ(std::get<HistoryEvent::AskingChanged>(read->what).names,
            std::vector<std::string>{"a\uFFFD[31m"});
}

TEST(HistoryEvent, SkipsMembersOfALaterVersion) {
  const std::string line =
      kStart + std::string(R"("kind":"lid","angle":{"degrees":[1,2]},"closed":true})");
  EXPECT_EQ(historyEvent(line), eventOf(HistoryEvent::LidMoved{true}));
}

TEST(HistoryEvent, DoesNotReadAKindOfALaterVersion) {
  EXPECT_FALSE(historyEvent(kStart + std::string(R"("kind":"docked","dock":1})")));
}

TEST(HistoryEvent, TakesAMemberThatIsMissingForNothing) {
  const auto read = historyEvent(kStart + std::string(R"("kind":"workBegan","key":"make"})"));
  HistoryEvent::WorkBegan bare;
  bare.key = "make";
  bare.display = "make";
  EXPECT_EQ(read, eventOf(bare));
}

TEST(HistoryEvent, DoesNotReadWhatWouldSayNothing) {
  for (const char* members :
       {R"("kind":"state"})", R"("kind":"state","state":"dancing"})", R"("kind":"lid"})",
        R"("kind":"lid","closed":1})", R"("kind":"workEnded"})", R"("kind":"power","percent":3})",
        R"("kind":"setting","from":"1"})", R"("kind":7})", "\"x\":1}"}) {
    EXPECT_FALSE(historyEvent(kStart + std::string(members))) << members;
  }
}

TEST(HistoryEvent, DoesNotReadAnyBeginningOfALine) {
  const std::string line = textOf(eventOf(HistoryEvent::WorkBegan{"a", "A", {}, 1, {1, 2, 3}}));
  for (std::size_t length = 0; length < line.size(); ++length)
    EXPECT_FALSE(historyEvent(line.substr(0, length)));
  EXPECT_TRUE(historyEvent(line));
}

TEST(HistoryEvent, DoesNotReadImpossibleTimes) {
  const auto readAt = [](const std::string& at, const std::string& moment) {
    return historyEvent(R"({"at":")" + at + R"(","run":1,"ms":)" + moment + R"(,"kind":"slept"})");
  };
  EXPECT_TRUE(readAt("2026-02-28T23:59:59.999Z", "0"));
  for (const char* at :
       {"2026-02-29T10:00:00.000Z", "2026-13-01T10:00:00.000Z", "2026-01-01T24:00:00.000Z",
        "2026-01-01T10:60:00.000Z", "9999-01-01T10:00:00.000Z", "2026-01-01T10:00:00Z",
        "2026-01-01 10:00:00.000Z", "2026-01-01T10:00:00.000", "+026-01-01T10:00:00.000Z", ""}) {
    EXPECT_FALSE(readAt(at, "0")) << at;
  }
  for (const char* moment : {"-1", "1e15", "1e300", "null", "\"5\""})
    EXPECT_FALSE(readAt("2026-02-28T10:00:00.000Z", moment)) << moment;
}

}  // namespace
}  // namespace staylit

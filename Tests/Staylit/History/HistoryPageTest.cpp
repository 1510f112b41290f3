#include "Staylit/History/HistoryPage.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "Staylit/History/LocalTimes.h"
#include "Tests/Staylit/History/HistoryScript.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;

/// A page on which a no-break space is written as a plain one.
class HistoryPageTest : public testing::Test {
 protected:
  HistoryPageTest() { setZone("UTC0"); }
  ~HistoryPageTest() override { setZone("UTC0"); }

  static void setZone(const char* zone) { ::setenv("TZ", zone, 1); }

  /// Of the days between both times.
  void make(tidewell::WallTime from, tidewell::WallTime to) {
    std::vector<HistoryTimeline> days;
    for (const LocalDay& day : localDaysBetween(from, to))
      days.push_back(timelineOf(script.history, day.from, day.to));
    page = HistoryPage(std::move(days), script.history.now, "Staylit 0.1.0").text();
    text = page;
    const std::string noBreak = "\u00a0";
    for (std::size_t at = 0; (at = text.find(noBreak, at)) != std::string::npos;)
      text.replace(at, noBreak.size(), " ");
  }
  void makeDay() { make(HistoryScript::at(0), HistoryScript::at(1'440)); }

  [[nodiscard]] bool has(const std::string& part) const {
    return text.find(part) != std::string::npos;
  }
  [[nodiscard]] std::size_t count(const std::string& part) const {
    std::size_t number = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size())
      ++number;
    return number;
  }

  /// Whether a strict reader finds nothing wrong; it writes what it finds to standard error.
  [[nodiscard]] bool isSound() const {
    const auto file = std::filesystem::temp_directory_path() /
                      ("staylit-page-" + std::to_string(::getpid()) + ".html");
    std::ofstream(file) << page;
    const int status = std::system(("python3 " STAYLIT_CHECK_PAGE " " + file.string()).c_str());
    std::filesystem::remove(file);
    return status == 0;
  }
  static bool canCheck() { return std::system("python3 --version >/dev/null 2>&1") == 0; }

  /// Three hours of ffmpeg, the last of them on battery.
  void workThreeHours() {
    script.start(0).battery(0, 100, true).begin(60, "ffmpeg").hold(60, "ffmpeg");
    script.battery(180, 99).battery(240, 60).finish(240, "ffmpeg").wind(240);
    script.state(242, StatusReport::State::idle).battery(250, 58, true);
  }

  HistoryScript script;
  std::string page;
  std::string text;
};

TEST_F(HistoryPageTest, IsSoundForAStrictReader) {
  if (!canCheck()) GTEST_SKIP() << "python3 is not installed";
  workThreeHours();
  script.add(300, HistoryEvent::FellAsleep{}).add(300, HistoryEvent::LidMoved{true});
  script.add(500, HistoryEvent::WokeUp{}).add(500, HistoryEvent::LidMoved{false});
  script.add(510, HistoryEvent::AskingChanged{{"mpv"}}).add(520, HistoryEvent::AskingChanged{});
  script.state(530, StatusReport::State::blocked, "Battery below 20%");
  script.state(540, StatusReport::State::paused).state(550, StatusReport::State::idle);
  script.add(560, HistoryEvent::SettingChanged{"graceSeconds", "120", "300"});
  script.hold(570, "make", {}).begin(570, "make").add(600, HistoryEvent::LidHoldChanged{true});
  makeDay();
  EXPECT_TRUE(isSound());
  make(HistoryScript::at(-9 * 1'440), HistoryScript::at(1'440));
  EXPECT_TRUE(isSound());
}

TEST_F(HistoryPageTest, SaysFirstWhatTheComputerWasHeldFor) {
  workThreeHours();
  makeDay();
  EXPECT_TRUE(has("<p class=\"answer\">Held for 3 h 2 min: <bdi>ffmpeg</bdi> 3 h.</p>")) << text;
  EXPECT_TRUE(has("<p class=\"more\"> Of the hold 1 h 2 min were on battery.</p>")) << text;
}

TEST_F(HistoryPageTest, DrawsAMarkWhereItsTimeIsInTheDay) {
  workThreeHours();
  makeDay();
  // From 01:00 to 04:00: the fourth of 24 hours begins after 4.167 hundredths of a day.
  EXPECT_TRUE(
      has("<a href=\"#d0w0\"><rect class=\"work\" x=\"4.167%\" y=\"3\" width=\"12.5%\" "
          "height=\"16\"/><title>ffmpeg worked 01:00 to 04:00 (3 h)\n"
          "at the start 100% CPU\nat most 150% CPU\non average 120% CPU\n"
          "1 h on battery</title></a>"))
      << text;
  EXPECT_TRUE(has("<tr id=\"d0w0\"><td>01:00 to 04:00</td><td><bdi>ffmpeg</bdi> worked: ")) << text;
}

TEST_F(HistoryPageTest, DrawsTheGracePeriodAsAnotherMark) {
  workThreeHours();
  makeDay();
  EXPECT_TRUE(has("<rect class=\"grace\" x=\"16.667%\"")) << text;
  EXPECT_TRUE(has("Held 04:00 to 04:02 (2 min): waiting for work to resume</title>")) << text;
}

TEST_F(HistoryPageTest, SumsEachWeekAndItsWorkOnBattery) {
  workThreeHours();
  make(HistoryScript::at(-1'440), HistoryScript::at(1'440));
  EXPECT_TRUE(has("<h2 id=\"w0\">Week 47 <span class=\"s\">21 to 22 November</span></h2>")) << text;
  EXPECT_TRUE(has("</svg></td><td class=\"n\">3 h</td><td class=\"n\">1 h</td></tr>")) << text;
  EXPECT_TRUE(has("<p class=\"answer\">Held for 3 h 2 min in 2 days: <bdi>ffmpeg</bdi> 3 h.</p>"))
      << text;
  EXPECT_TRUE(has("Most on Sunday 22 November (3 h 2 min).")) << text;
  EXPECT_TRUE(has("<td class=\"n\">3 h 2 min</td><td class=\"n\">none</td>")) << text;
}

TEST_F(HistoryPageTest, BeginsANewWeekOnMonday) {
  workThreeHours();
  script.history.now = HistoryScript::at(2'880);
  make(HistoryScript::at(0), HistoryScript::at(2'880));
  EXPECT_TRUE(has(">Week 47 <span class=\"s\">22 November</span>")) << text;
  EXPECT_TRUE(has(">Week 48 <span class=\"s\">23 November</span>")) << text;
  EXPECT_LT(text.find(">Week 48"), text.find(">Week 47"));
}

TEST_F(HistoryPageTest, NamesBothYearsWhereThereAreTwo) {
  workThreeHours();
  make(HistoryScript::at(-367 * 1'440), HistoryScript::at(1'440));
  EXPECT_TRUE(has("awake, 20 November 2025 to 22 November 2026</title>"));
  EXPECT_TRUE(has("<span class=\"s\">29 December 2025 to 4 January 2026</span>"));
  make(HistoryScript::at(-1'440), HistoryScript::at(1'440));
  EXPECT_TRUE(has("awake, 21 to 22 November 2026</title>")) << text;
}

TEST_F(HistoryPageTest, EscapesWhateverNamesSay) {
  const std::string name = "</title><script>alert(\"x\")</script>&'\n\u202eevil\u2066";
  script.start(0).begin(60, name).hold(60, name, {name});
  script.add(70, HistoryEvent::AskingChanged{{name}});
  script.add(80, HistoryEvent::SettingChanged{name, name, name});
  script.state(90, StatusReport::State::blocked, name).finish(90, name);
  makeDay();
  EXPECT_EQ(count("<script>"), 1U);
  EXPECT_FALSE(has("\u202e"));
  EXPECT_FALSE(has("\u2066"));
  EXPECT_TRUE(
      has("<bdi>&lt;/title&gt;&lt;script&gt;alert(&quot;x&quot;)&lt;/script&gt;&amp;&#39;"
          "\ufffd\ufffdevil\ufffd</bdi>"))
      << text;
  EXPECT_TRUE(!canCheck() || isSound());
}

TEST_F(HistoryPageTest, SaysSoWhereNothingWasKept) {
  makeDay();
  EXPECT_TRUE(has("<p class=\"answer\">Nothing was kept: Staylit did not run in this time.</p>"));
  EXPECT_TRUE(has("Staylit did not run on this day.")) << text;
  EXPECT_FALSE(has("<table"));
  EXPECT_TRUE(!canCheck() || isSound());
}

TEST_F(HistoryPageTest, SaysSoWhereNothingWasHeld) {
  script.start(0);
  script.history.isRunning = true;
  makeDay();
  EXPECT_TRUE(has("<p class=\"answer\">Nothing kept this computer awake.</p>")) << text;
}

TEST_F(HistoryPageTest, SaysThatAHoldGoesOn) {
  script.start(0).begin(60, "make").hold(60, "make");
  script.history.isRunning = true;
  script.history.now = HistoryScript::at(720);
  makeDay();
  EXPECT_TRUE(has("<td>01:00 to 12:00 and on</td><td>Held: make is working.")) << text;
  EXPECT_TRUE(has("<line class=\"now\" x1=\"50%\" x2=\"50%\"")) << text;
  EXPECT_TRUE(has("<rect class=\"bg\" width=\"50%\"")) << text;
}

TEST_F(HistoryPageTest, SaysWhereTheProgramEndedWithoutAWord) {
  script.start(0).begin(60, "make").hold(60, "make");
  script.history.lastSeen = HistoryScript::at(600);
  makeDay();
  EXPECT_TRUE(has("01:00 to 10:00 at least")) << text;
  EXPECT_TRUE(has("Staylit was last seen; it ended without a word")) << text;
  EXPECT_TRUE(has("Staylit did not run from 10:00 to 24:00.")) << text;
  EXPECT_TRUE(has("<rect class=\"gap\" x=\"41.667%\" width=\"58.333%\"")) << text;
}

TEST_F(HistoryPageTest, DoesNotCallHeldWhatNobodyGranted) {
  script.start(0).begin(60, "make").hold(60, "make", {}).state(180, StatusReport::State::idle);
  script.finish(180, "make");
  makeDay();
  EXPECT_TRUE(has("<p class=\"answer\">Nothing kept this computer awake.</p>")) << text;
  EXPECT_TRUE(has("<rect class=\"want\"")) << text;
  EXPECT_TRUE(has("No service granted the hold for 2 h more.")) << text;
}

TEST_F(HistoryPageTest, DrawsADayOf23HoursInItsOwnMeasure) {
  setZone("CET-1CEST,M3.5.0,M10.5.0/3");
  const auto day = std::chrono::sys_days(std::chrono::year(2026) / 3 / 29);
  const double minutes = HistoryScript::Minutes(day - HistoryScript::at(0)).count();
  // 01:00 in universal time is when the clocks go from 02:00 to 03:00.
  script.start(minutes - 60).begin(minutes + 60, "make").finish(minutes + 120, "make");
  script.history.now = day + 48h;
  make(day + 5h, day + 6h);
  EXPECT_TRUE(has("<h2 id=\"2026-03-29\">Sunday 29 March</h2>")) << text;
  EXPECT_TRUE(has("The clocks were put forward: this day lasted 23 h.")) << text;
  // Two of the 23 hours were over.
  EXPECT_TRUE(has("x=\"8.696%\" y=\"3\" width=\"4.348%\"")) << text;
  EXPECT_TRUE(has("make worked 03:00 to 04:00 (1 h)")) << text;
  EXPECT_TRUE(has("<text class=\"odd\" x=\"8.696%\" y=\"11\" text-anchor=\"middle\">03</text>"))
      << text;
}

TEST_F(HistoryPageTest, DrawsADayOf25HoursInItsOwnMeasure) {
  setZone("CET-1CEST,M3.5.0,M10.5.0/3");
  const auto day = std::chrono::sys_days(std::chrono::year(2026) / 10 / 25);
  const double minutes = HistoryScript::Minutes(day - HistoryScript::at(0)).count();
  script.start(minutes - 120).begin(minutes + 120, "make").finish(minutes + 180, "make");
  make(day + 5h, day + 6h);
  EXPECT_TRUE(has("The clocks were put back: this day lasted 25 h.")) << text;
  // Midnight was at 22:00 in universal time, so 4 of 25 hours were over; it was 03:00.
  EXPECT_TRUE(has("x=\"16%\" y=\"3\" width=\"4%\"")) << text;
  EXPECT_TRUE(has("make worked 03:00 to 04:00 (1 h)")) << text;
  EXPECT_EQ(count(">03</text>"), 1U);
}

TEST_F(HistoryPageTest, GathersTheApplicationsThatWorkedLeast) {
  script.start(0);
  for (int number = 0; number < 14; ++number)
    script.begin(60, "a" + std::to_string(number));
  for (int number = 0; number < 14; ++number)
    script.finish(100 + number, "a" + std::to_string(number));
  makeDay();
  EXPECT_EQ(count("role=\"rowheader\""), 12U);
  EXPECT_TRUE(has("role=\"rowheader\"><bdi>a13</bdi></th>")) << text;
  EXPECT_TRUE(has("role=\"rowheader\">4 others</th>")) << text;
  EXPECT_TRUE(has("<td><bdi>a0</bdi> worked: ")) << text;
}

TEST_F(HistoryPageTest, StaysSmallForThirtyDaysOfFortyApplications) {
  script.start(-30 * 1'440);
  for (int day = -30; day < 0; ++day) {
    for (int spell = 0; spell < 5; ++spell) {
      for (int number = 0; number < 40; ++number) {
        const double from = day * 1'440 + spell * 280 + number * 5;
        script.begin(from, "application " + std::to_string(number));
        script.finish(from + 15, "application " + std::to_string(number));
      }
    }
  }
  const auto before = std::chrono::steady_clock::now();
  make(HistoryScript::at(-30 * 1'440), HistoryScript::at(0));
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - before;
  std::cout << page.size() << " bytes in " << took.count() << " s\n";
  EXPECT_EQ(count("class=\"log\""), 30U);
  // Six thousand lines of work, of which a quarter has a mark of its own.
  EXPECT_LT(page.size(), 3'000'000U);
  EXPECT_TRUE(!canCheck() || isSound());
}

}  // namespace
}  // namespace staylit

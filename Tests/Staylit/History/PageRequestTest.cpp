#include "Staylit/History/PageRequest.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "Tests/Staylit/History/HistoryScript.h"

namespace staylit {
namespace {

TEST(PageRequest, IsAbsentWhereNoPageIsAskedFor) {
  EXPECT_EQ(PageRequest::in({"staylit", "--history"}), std::nullopt);
  EXPECT_EQ(PageRequest::in({"staylit", "--open"}), std::nullopt);
}

TEST(PageRequest, NamesTheFileAndTheDays) {
  const auto request = PageRequest::in(
      {"staylit", "--history", "--html", "a.html", "--since", "today", "--until", "14:00"});
  ASSERT_TRUE(request);
  EXPECT_EQ(request->file, "a.html");
  EXPECT_FALSE(request->opens);
  EXPECT_EQ(request->days.since, "today");
  EXPECT_EQ(request->days.until, "14:00");
}

TEST(PageRequest, MeansAWeekUnlessDaysAreNamed) {
  const auto request = PageRequest::in({"staylit", "--history", "--open"});
  ASSERT_TRUE(request);
  EXPECT_TRUE(request->opens);
  EXPECT_EQ(request->file, "");
  EXPECT_EQ(request->days.since, "6d");
}

class PageRequestTest : public testing::Test {
 protected:
  PageRequestTest() { ::setenv("TZ", "UTC0", 1); }

  [[nodiscard]] PageRequest::Page made() const { return request.make(script.history, "Staylit"); }
  [[nodiscard]] bool has(const std::string& part) const {
    return made().text.find(part) != std::string::npos;
  }

  PageRequest request;
  HistoryScript script;
};

TEST_F(PageRequestTest, HasWholeDaysUpToTheDayOfToday) {
  script.history.now = HistoryScript::at(720);
  EXPECT_TRUE(has("<h3 id=\"2026-11-16\">"));
  EXPECT_TRUE(has("<h3 id=\"2026-11-22\">"));
  EXPECT_FALSE(has("id=\"2026-11-15\""));
  EXPECT_FALSE(has("id=\"2026-11-23\""));
}

TEST_F(PageRequestTest, HasTheWholeDayOfAnHour) {
  script.history.now = HistoryScript::at(720);
  request.days.since = "1h";
  script.start(60).begin(120, "make").finish(180, "make");
  EXPECT_TRUE(has("make worked 02:00 to 03:00"));
}

TEST_F(PageRequestTest, BeginsAtTheFirstDayOfWhichSomethingWasKept) {
  script.start(-2'000).add(-1'900, HistoryEvent::Stopped{}).start(60).begin(120, "make");
  script.history.now = HistoryScript::at(720);
  request.days.since = "1970-01-01";
  EXPECT_FALSE(has("id=\"2026-11-19\""));
  EXPECT_TRUE(has("id=\"2026-11-20\""));
  EXPECT_TRUE(has("id=\"2026-11-21\""));
  EXPECT_TRUE(has("id=\"2026-11-22\""));
}

TEST_F(PageRequestTest, SaysOfAWeekThatNothingWasKept) {
  script.history.now = HistoryScript::at(720);
  request.days.since = "1970-01-01";
  EXPECT_TRUE(has("Nothing was kept"));
  EXPECT_FALSE(has("id=\"2026-11-15\""));
  EXPECT_TRUE(has("id=\"2026-11-16\""));
  EXPECT_TRUE(has("id=\"2026-11-22\""));
}

TEST_F(PageRequestTest, SaysWhatIsNoTime) {
  request.days.since = "never";
  EXPECT_EQ(made().text, "");
  EXPECT_NE(made().error.find("never"), std::string::npos);
}

TEST_F(PageRequestTest, HasNoDaysThatAreStillToCome) {
  script.history.now = HistoryScript::at(720);
  request.days.since = "2026-11-24";
  request.days.until = "2026-11-25";
  EXPECT_EQ(made().error, "the days that are asked for are still to come");
}

}  // namespace
}  // namespace staylit

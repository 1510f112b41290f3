#include "Staylit/History/HistoryReader.h"

#include <gtest/gtest.h>

#include <string>

#include "Tests/Staylit/History/HistoryScript.h"

namespace staylit {
namespace {

std::string linesOf(const HistoryScript& script) {
  std::string text;
  for (const HistoryEvent& event : script.history.events)
    text += textOf(event) + "\n";
  return text;
}

TEST(HistoryReader, ReadsEachLine) {
  HistoryScript script;
  script.start(0).hold(10, "make").state(20, StatusReport::State::idle);
  const auto seen = HistoryScript::at(25);
  const History history = historyIn({linesOf(script), seen, true}, HistoryScript::at(30));
  EXPECT_EQ(history.events, script.history.events);
  EXPECT_EQ(history.lastSeen, seen);
  EXPECT_TRUE(history.isRunning);
  EXPECT_EQ(history.now, HistoryScript::at(30));
}

TEST(HistoryReader, LeavesOutWhatIsTorn) {
  HistoryScript script;
  script.start(0).hold(10, "make").state(20, StatusReport::State::idle);
  const std::string text = linesOf(script);
  const std::string torn = text.substr(0, text.size() / 2) + "\n" + text;
  EXPECT_EQ(historyIn({torn, {}, false}, {}).events.size(), 4U);
  EXPECT_EQ(historyIn({text.substr(0, text.size() - 5), {}, false}, {}).events.size(), 2U);
  EXPECT_EQ(historyIn({"\n\n" + text + "\n", {}, false}, {}).events.size(), 3U);
}

TEST(HistoryReader, ReadsTheLastLineWithoutItsEnd) {
  HistoryScript script;
  script.start(0);
  const std::string text = linesOf(script);
  EXPECT_EQ(historyIn({text.substr(0, text.size() - 1), {}, false}, {}).events.size(), 1U);
}

TEST(HistoryReader, ReadsNothingFromNothing) {
  EXPECT_TRUE(historyIn({"", {}, false}, {}).events.empty());
}

}  // namespace
}  // namespace staylit

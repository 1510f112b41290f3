#include "Staylit/History/StoredHistoryLog.h"

#include <gtest/gtest.h>

#include <chrono>

#include "Tests/Fakes/FakeLineStore.h"
#include "Tests/Staylit/History/HistoryScript.h"

namespace staylit {
namespace {

TEST(StoredHistoryLog, GivesEachEventToTheStoreAsALine) {
  tidewell::FakeLineStore store;
  StoredHistoryLog log(store);
  HistoryScript script;
  script.start(0).hold(10, "make");
  for (const HistoryEvent& event : script.history.events)
    log.append(event);
  ASSERT_EQ(store.lines.size(), 2U);
  EXPECT_EQ(historyEvent(store.lines[1]), script.history.events[1]);
  log.refresh();
  EXPECT_EQ(store.refreshed, 1);
}

TEST(StoredHistoryLog, TellsAStartWhenTheRunBeforeWasLastSeen) {
  tidewell::FakeLineStore store;
  store.lastWritten = HistoryScript::at(-60);
  StoredHistoryLog log(store);
  log.append(HistoryScript().start(0).history.events[0]);
  const auto started = historyEvent(store.lines.at(0));
  ASSERT_TRUE(started);
  EXPECT_EQ(std::get<HistoryEvent::Started>(started->what).lastSeen, HistoryScript::at(-60));
}

}  // namespace
}  // namespace staylit

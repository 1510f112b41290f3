#include <chrono>

#include "Staylit/History/HistoryReader.h"
#include "Staylit/History/HistorySums.h"
#include "Tests/Fuzz/Fuzzer.h"

using staylit::HistoryTimeline;

namespace {

void requireOrder(const HistoryTimeline& timeline, const HistoryTimeline::Span& span) {
  fuzz::require(timeline.from <= span.from && span.from <= span.to && span.to <= timeline.to);
}

/// Whatever the lines say, spans lie within the timeline, and parts follow each other.
void examine(const HistoryTimeline& timeline) {
  for (const auto& hold : timeline.holds) {
    requireOrder(timeline, hold.span);
    fuzz::require(!hold.parts.empty());
    fuzz::require(hold.parts.front().from == hold.span.from);
    fuzz::require(hold.parts.back().to == hold.span.to);
    for (std::size_t index = 1; index < hold.parts.size(); ++index)
      fuzz::require(hold.parts[index - 1].to == hold.parts[index].from);
  }
  for (const auto& work : timeline.works) {
    requireOrder(timeline, work.span);
    fuzz::require(work.onBattery <= work.span.length());
  }
  for (const auto& run : timeline.runs)
    requireOrder(timeline, run.span);
  const auto sums = staylit::sumsOf(timeline);
  fuzz::require(sums.held <= timeline.to - timeline.from);
  fuzz::require(sums.heldOnBattery <= sums.held);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace std::chrono_literals;
  const tidewell::WallTime now = std::chrono::sys_days(std::chrono::year(2026) / 11 / 22) + 15h;
  const auto history = staylit::historyIn({fuzz::textOf(data, size), now - 1h, size % 2 == 0}, now);
  for (const auto& event : history.events) {
    // What was read is written in a form that is read as the same.
    const auto again = staylit::historyEvent(staylit::textOf(event));
    fuzz::require(again && staylit::textOf(*again) == staylit::textOf(event));
  }
  examine(staylit::timelineOf(history, now - 24h, now));
  examine(staylit::timelineOf(history, now - 240h * 365, now + 24h));
  return 0;
}

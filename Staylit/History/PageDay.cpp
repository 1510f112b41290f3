#include "Staylit/History/PageDay.h"

#include <functional>
#include <utility>

namespace staylit {

using Span = HistoryTimeline::Span;
using std::chrono::nanoseconds;

std::vector<Span> joined(std::vector<Span> spans) {
  std::ranges::stable_sort(spans, {}, &Span::from);
  std::vector<Span> all;
  for (const Span& span : spans) {
    if (all.empty() || span.from > all.back().to) {
      all.push_back(span);
    } else if (span.to > all.back().to) {
      all.back().to = span.to;
      all.back().ending = span.ending;
    }
  }
  return all;
}

nanoseconds lengthOf(const std::vector<Span>& spans) {
  nanoseconds sum{};
  for (const Span& span : joined(spans))
    sum += span.length();
  return sum;
}

std::vector<Span> heldSpans(const HistoryTimeline& timeline) {
  std::vector<Span> spans;
  for (const HistoryTimeline::Hold& hold : timeline.holds) {
    for (const HistoryTimeline::Hold::Part& part : hold.parts) {
      if (!part.isGranted()) continue;
      spans.push_back({part.from, part.to, false, HistoryTimeline::Ending::ended});
    }
  }
  return joined(std::move(spans));
}

void addTo(HistorySums& all, const HistorySums& more) {
  all.held += more.held;
  all.heldOnBattery += more.heldOnBattery;
  all.notGranted += more.notGranted;
  all.blocked += more.blocked;
  all.paused += more.paused;
  all.asleep += more.asleep;
  all.running += more.running;
  for (const HistorySums::Work& work : more.works) {
    const auto sum = std::ranges::find(all.works, work.key, &HistorySums::Work::key);
    if (sum == all.works.end()) {
      all.works.push_back(work);
    } else {
      sum->length += work.length;
      sum->onBattery += work.onBattery;
    }
  }
  std::ranges::stable_sort(all.works, std::greater(), &HistorySums::Work::length);
}

PageDay::PageDay(HistoryTimeline ofDay, std::string name, tidewell::WallTime madeAt)
    : timeline(std::move(ofDay)),
      id(std::move(name)),
      now(std::max(madeAt, timeline.from)),
      sums(sumsOf(timeline)) {}

std::vector<Span> PageDay::gaps() const {
  std::vector<Span> runs;
  for (const HistoryTimeline::Run& run : timeline.runs)
    runs.push_back(run.span);
  std::vector<Span> gaps;
  tidewell::WallTime known = timeline.from;
  for (const Span& run : joined(std::move(runs))) {
    if (run.from > known) {
      gaps.push_back({known, run.from, false, HistoryTimeline::Ending::ended});
    }
    known = std::max(known, run.to);
  }
  if (knownUntil() > known) {
    gaps.push_back({known, knownUntil(), false, HistoryTimeline::Ending::ended});
  }
  return gaps;
}

nanoseconds PageDay::unknown() const {
  return lengthOf(gaps());
}

bool PageDay::hasBattery() const {
  return std::ranges::any_of(timeline.charges,
                             [](const auto& charge) { return charge.power.hasBattery; });
}

}  // namespace staylit

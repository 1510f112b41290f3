#include "Staylit/History/HistoryTimeline.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "Staylit/History/HistoryRun.h"

namespace staylit {

using Span = HistoryTimeline::Span;
using tidewell::WallTime;

namespace {

/// The events of one run, in order, and what came after them.
struct RunEvents {
  std::int64_t run = 0;
  std::vector<const HistoryEvent*> events;
  /// The start that follows the last event of this run.
  const HistoryEvent* nextStart = nullptr;
};

std::vector<RunEvents> runsIn(const History& history) {
  std::vector<RunEvents> runs;
  for (const HistoryEvent& event : history.events) {
    auto found = std::ranges::find(runs, event.run, &RunEvents::run);
    if (found == runs.end()) {
      runs.push_back({event.run, {}, nullptr});
      found = runs.end() - 1;
    }
    found->events.push_back(&event);
    found->nextStart = nullptr;
    if (!std::holds_alternative<HistoryEvent::Started>(event.what)) continue;
    for (RunEvents& other : runs) {
      if (&other != &*found && !other.nextStart) other.nextStart = &event;
    }
  }
  return runs;
}

/// How a run ended that did not say so.
std::pair<WallTime, HistoryTimeline::Ending> endOf(const RunEvents& run, const History& history,
                                                   WallTime lastEvent) {
  using Ending = HistoryTimeline::Ending;
  if (!run.nextStart && history.isRunning) return {std::max(lastEvent, history.now), Ending::open};
  const auto lastSeen = run.nextStart
                            ? std::get<HistoryEvent::Started>(run.nextStart->what).lastSeen
                            : history.lastSeen;
  const WallTime latest = run.nextStart ? run.nextStart->at : history.now;
  const WallTime seen = std::min(lastSeen.value_or(lastEvent), latest);
  return {std::max(lastEvent, seen), Ending::lost};
}

/// Cuts spans to a range of time.
class RangeCutter {
 public:
  RangeCutter(WallTime from, WallTime to) : from_(from), to_(to) {}

  /// Whether something of `span` is left.
  bool cut(Span& span) const {
    const bool isOutside =
        span.to < from_ || span.from >= to_ || (span.to == from_ && span.from < from_);
    if (isOutside) return false;
    if (span.from < from_) {
      span.from = from_;
      span.beganEarlier = true;
    }
    if (span.to > to_) {
      span.to = to_;
      span.ending = HistoryTimeline::Ending::later;
    }
    return true;
  }

  void cutAll(std::vector<Span>& spans) const {
    std::erase_if(spans, [this](Span& span) { return !cut(span); });
  }

  template <typename Element>
  void cutAll(std::vector<Element>& elements) const {
    std::erase_if(elements, [this](Element& element) { return !cut(element.span); });
  }

  static void cutParts(HistoryTimeline::Hold& hold) {
    // The last change may have come at the very end, as before a crash. Its part is empty and
    // stays.
    std::erase_if(hold.parts, [&span = hold.span](const auto& part) {
      return (part.to <= span.from && part.from < span.from) ||
             (part.from >= span.to && part.to > span.to);
    });
    for (auto& part : hold.parts) {
      part.from = std::max(part.from, hold.span.from);
      part.to = std::min(part.to, hold.span.to);
    }
  }

  template <typename Element>
  void cutPoints(std::vector<Element>& elements) const {
    std::erase_if(elements,
                  [this](const Element& each) { return each.at < from_ || each.at >= to_; });
  }

 private:
  WallTime from_;
  WallTime to_;
};

/// Of what was before the range only the last charge counts, from the beginning of the range on.
void keepChargeBefore(HistoryTimeline& run, WallTime from) {
  const auto isLater = [from](const auto& charge) { return charge.at > from; };
  const auto first = std::ranges::find_if(run.charges, isLater);
  const bool ranOn = !run.runs.empty() && run.runs.back().span.to > from;
  if (first == run.charges.begin() || !ranOn) return;
  (first - 1)->at = from;
}

void cutTo(HistoryTimeline& timeline, WallTime from, WallTime to) {
  const RangeCutter cutter(from, to);
  keepChargeBefore(timeline, from);
  cutter.cutAll(timeline.runs);
  cutter.cutAll(timeline.holds);
  for (HistoryTimeline::Hold& hold : timeline.holds)
    RangeCutter::cutParts(hold);
  std::erase_if(timeline.holds, [](const auto& hold) { return hold.parts.empty(); });
  cutter.cutAll(timeline.blocks);
  cutter.cutAll(timeline.pauses);
  cutter.cutAll(timeline.sleeps);
  cutter.cutAll(timeline.works);
  cutter.cutAll(timeline.askings);
  cutter.cutAll(timeline.onBattery);
  cutter.cutAll(timeline.lidClosed);
  cutter.cutAll(timeline.lidHolds);
  cutter.cutPoints(timeline.charges);
  cutter.cutPoints(timeline.settings);
  cutter.cutPoints(timeline.clockSets);
}

void measureOnBattery(HistoryTimeline& timeline) {
  for (HistoryTimeline::Work& work : timeline.works) {
    for (const Span& battery : timeline.onBattery) {
      const auto common =
          std::min(work.span.to, battery.to) - std::max(work.span.from, battery.from);
      work.onBattery += std::max(common, std::chrono::nanoseconds(0));
    }
  }
}

template <typename Element>
void append(std::vector<Element>& all, std::vector<Element>& more) {
  all.insert(all.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

void append(HistoryTimeline& all, HistoryTimeline run) {
  append(all.runs, run.runs);
  append(all.holds, run.holds);
  append(all.blocks, run.blocks);
  append(all.pauses, run.pauses);
  append(all.sleeps, run.sleeps);
  append(all.works, run.works);
  append(all.askings, run.askings);
  append(all.charges, run.charges);
  append(all.onBattery, run.onBattery);
  append(all.lidClosed, run.lidClosed);
  append(all.lidHolds, run.lidHolds);
  append(all.settings, run.settings);
  append(all.clockSets, run.clockSets);
}

template <typename Element>
void sortByTime(std::vector<Element>& elements) {
  std::ranges::stable_sort(elements, {}, [](const Element& each) {
    if constexpr (requires { each.span; }) {
      return each.span.from;
    } else if constexpr (requires { each.at; }) {
      return each.at;
    } else {
      return each.from;
    }
  });
}

void sortByTime(HistoryTimeline& timeline) {
  sortByTime(timeline.runs);
  sortByTime(timeline.holds);
  sortByTime(timeline.blocks);
  sortByTime(timeline.pauses);
  sortByTime(timeline.sleeps);
  sortByTime(timeline.works);
  sortByTime(timeline.askings);
  sortByTime(timeline.charges);
  sortByTime(timeline.onBattery);
  sortByTime(timeline.lidClosed);
  sortByTime(timeline.lidHolds);
  sortByTime(timeline.settings);
  sortByTime(timeline.clockSets);
}

}  // namespace

HistoryTimeline timelineOf(const History& history, WallTime from, WallTime to) {
  HistoryTimeline timeline;
  timeline.from = from;
  timeline.to = to;
  for (const RunEvents& events : runsIn(history)) {
    HistoryRun run(*events.events.back());
    for (const HistoryEvent* event : events.events)
      run.add(*event);
    if (!run.hasEnded()) {
      const auto [end, ending] = endOf(events, history, run.lastEventAt());
      run.end(end, ending);
    }
    HistoryTimeline ofRun = std::move(run).timeline();
    cutTo(ofRun, from, to);
    measureOnBattery(ofRun);
    append(timeline, std::move(ofRun));
  }
  sortByTime(timeline);
  return timeline;
}

}  // namespace staylit

#include "Staylit/History/HistorySums.h"

#include <algorithm>
#include <utility>

namespace staylit {
namespace {

using SumLength = HistorySums::Length;
using SummedSpan = std::pair<tidewell::WallTime, tidewell::WallTime>;
using SummedSpans = std::vector<SummedSpan>;

/// Without overlaps, in order.
SummedSpans merged(SummedSpans spans) {
  std::ranges::sort(spans);
  SummedSpans result;
  for (const SummedSpan& span : spans) {
    if (!result.empty() && span.first <= result.back().second) {
      result.back().second = std::max(result.back().second, span.second);
    } else {
      result.push_back(span);
    }
  }
  return result;
}

SumLength lengthOf(const SummedSpans& spans) {
  SumLength length{};
  for (const auto& [from, to] : merged(spans))
    length += to - from;
  return length;
}

SumLength lengthOfCommon(const SummedSpans& left, const SummedSpans& right) {
  SumLength length{};
  const SummedSpans others = merged(right);
  for (const auto& [from, to] : merged(left)) {
    for (const auto& [otherFrom, otherTo] : others)
      length += std::max(std::min(to, otherTo) - std::max(from, otherFrom), SumLength(0));
  }
  return length;
}

SummedSpan summed(const HistoryTimeline::Span& span) {
  return {span.from, span.to};
}

SummedSpans spansOf(const std::vector<HistoryTimeline::Span>& spans) {
  SummedSpans result;
  for (const HistoryTimeline::Span& span : spans)
    result.push_back(summed(span));
  return result;
}

template <typename Element>
SummedSpans spansOf(const std::vector<Element>& elements) {
  SummedSpans result;
  for (const Element& element : elements)
    result.push_back(summed(element.span));
  return result;
}

SummedSpans holdParts(const HistoryTimeline& timeline, bool isGranted) {
  SummedSpans spans;
  for (const HistoryTimeline::Hold& hold : timeline.holds) {
    for (const HistoryTimeline::Hold::Part& part : hold.parts) {
      if (part.isGranted() == isGranted) spans.emplace_back(part.from, part.to);
    }
  }
  return spans;
}

void raise(WorkFigures& highest, const WorkFigures& figures) {
  highest = {std::max(highest.cpuPercent, figures.cpuPercent),
             std::max(highest.diskKBps, figures.diskKBps),
             std::max(highest.netKBps, figures.netKBps)};
}

std::vector<HistorySums::Work> worksOf(const HistoryTimeline& timeline) {
  std::vector<HistorySums::Work> works;
  std::vector<SummedSpans> spans;
  for (const HistoryTimeline::Work& work : timeline.works) {
    auto found = std::ranges::find(works, work.key, &HistorySums::Work::key);
    if (found == works.end()) {
      works.push_back({work.key, work.display, work.category, {}, {}, {}});
      spans.emplace_back();
      found = works.end() - 1;
    }
    spans[static_cast<std::size_t>(found - works.begin())].push_back(summed(work.span));
    raise(found->peak, work.peak.value_or(work.start));
  }
  const SummedSpans battery = spansOf(timeline.onBattery);
  for (std::size_t index = 0; index < works.size(); ++index) {
    works[index].length = lengthOf(spans[index]);
    works[index].onBattery = lengthOfCommon(spans[index], battery);
  }
  std::ranges::stable_sort(works, std::ranges::greater(), &HistorySums::Work::length);
  return works;
}

std::vector<HistorySums::Asking> askingsOf(const HistoryTimeline& timeline) {
  std::vector<HistorySums::Asking> askings;
  std::vector<SummedSpans> spans;
  for (const HistoryTimeline::Asking& asking : timeline.askings) {
    auto found = std::ranges::find(askings, asking.name, &HistorySums::Asking::name);
    if (found == askings.end()) {
      askings.push_back({asking.name, {}});
      spans.emplace_back();
      found = askings.end() - 1;
    }
    spans[static_cast<std::size_t>(found - askings.begin())].push_back(summed(asking.span));
  }
  for (std::size_t index = 0; index < askings.size(); ++index)
    askings[index].length = lengthOf(spans[index]);
  std::ranges::stable_sort(askings, std::ranges::greater(), &HistorySums::Asking::length);
  return askings;
}

}  // namespace

HistorySums sumsOf(const HistoryTimeline& timeline) {
  HistorySums sums;
  const SummedSpans held = holdParts(timeline, true);
  sums.held = lengthOf(held);
  sums.heldOnBattery = lengthOfCommon(held, spansOf(timeline.onBattery));
  sums.notGranted = lengthOf(holdParts(timeline, false));
  sums.blocked = lengthOf(spansOf(timeline.blocks));
  sums.paused = lengthOf(spansOf(timeline.pauses));
  sums.asleep = lengthOf(spansOf(timeline.sleeps));
  sums.running = lengthOf(spansOf(timeline.runs));
  sums.works = worksOf(timeline);
  sums.askings = askingsOf(timeline);
  return sums;
}

}  // namespace staylit

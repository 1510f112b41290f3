#pragma once

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "Staylit/History/HistorySums.h"
#include "Staylit/History/HistoryTimeline.h"
#include "Tidewell/Ports/Clock.h"

namespace staylit {

/// One day of the page of the history. A value.
struct PageDay {
  /// `ofDay` goes from midnight to midnight. `madeAt` is when the page is made.
  PageDay(HistoryTimeline ofDay, std::string name, tidewell::WallTime madeAt);

  HistoryTimeline timeline;
  std::string id;  ///< Begins the names of its marks; unique on the page.
  tidewell::WallTime now;
  HistorySums sums;

  /// Until when something can be known of the day.
  [[nodiscard]] tidewell::WallTime knownUntil() const { return std::min(now, timeline.to); }
  /// When no program ran, so that nothing is known.
  [[nodiscard]] std::vector<HistoryTimeline::Span> gaps() const;
  [[nodiscard]] std::chrono::nanoseconds unknown() const;
  /// Whether a program ran at any time of the day.
  [[nodiscard]] bool isKnown() const { return !timeline.runs.empty(); }
  [[nodiscard]] bool hasBattery() const;
};

/// Adds the sums of another stretch of time, except who asked and the highest figures.
void addTo(HistorySums& all, const HistorySums& more);

/// `spans` without overlaps, in order.
[[nodiscard]] std::vector<HistoryTimeline::Span> joined(std::vector<HistoryTimeline::Span> spans);
[[nodiscard]] std::chrono::nanoseconds lengthOf(const std::vector<HistoryTimeline::Span>& spans);
/// When a service kept the machine awake, without overlaps, in order.
[[nodiscard]] std::vector<HistoryTimeline::Span> heldSpans(const HistoryTimeline& timeline);

}  // namespace staylit

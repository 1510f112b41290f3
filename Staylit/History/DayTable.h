#pragma once

#include <cstddef>
#include <string>

#include "Staylit/History/PageDay.h"

namespace staylit {

/// All that happened in a day as a table of the page, one line each, in the order of time. Main
/// thread only.
class DayTable {
 public:
  DayTable() = delete;

  [[nodiscard]] static std::string of(const PageDay& day);

  /// The name of the line of one span, by which marks link to it. `kind` is a letter: h is a hold,
  /// w is work, a asks, b is a block, p a pause, s sleep, l a closed lid, o power from the battery.
  /// `index` is the place among the spans of that kind in the timeline.
  [[nodiscard]] static std::string row(const std::string& day, char kind, std::size_t index);

  /// Work in words, in HTML without elements.
  [[nodiscard]] static std::string saidOf(const HistoryTimeline::Work& work);
};

}  // namespace staylit

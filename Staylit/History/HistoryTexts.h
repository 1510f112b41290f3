#pragma once

#include <string>
#include <vector>

#include "Staylit/History/HistoryTimeline.h"
#include "Tidewell/Ports/Clock.h"

namespace staylit {

/// What a timeline says to people. Main thread only, because times are local.
struct HistoryTexts {
  /// What the terminal can show.
  struct Style {
    bool isUnicode = false;
    bool isColoured = false;
  };

  /// The answer in short: "Held for 3 h 12 min today: ffmpeg 2 h 40 min, make 32 min. Asleep from
  /// 01:10 to 07:45." `now` is when the timeline was made. Where that is before the timeline and
  /// nothing is in it, the answer is that the time is still to come.
  [[nodiscard]] static std::string summary(const HistoryTimeline& timeline, tidewell::WallTime now);

  /// The summary of what `history` has between `from` and `to`, and each day that has something
  /// with its bar and a line for each thing. What lasted over midnight has a line on each of its
  /// days, which tells of that day only; just the peak and the mean are of the whole work. No line
  /// of the bar is longer than 80 characters.
  [[nodiscard]] static std::vector<std::string> lines(const History& history,
                                                      tidewell::WallTime from,
                                                      tidewell::WallTime to, Style style);
};

}  // namespace staylit

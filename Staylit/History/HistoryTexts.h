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
  /// 01:10 to 07:45." `now` is when the timeline was made.
  [[nodiscard]] static std::string summary(const HistoryTimeline& timeline, tidewell::WallTime now);

  /// The summary, and each day that has something with its bar and a line for each thing. No line
  /// of the bar is longer than 80 characters.
  [[nodiscard]] static std::vector<std::string> lines(const HistoryTimeline& timeline,
                                                      tidewell::WallTime now, Style style);
};

}  // namespace staylit

#pragma once

#include <string>
#include <vector>

#include "Staylit/History/HistoryTexts.h"
#include "Staylit/History/HistoryTimeline.h"
#include "Staylit/History/LocalTimes.h"

namespace staylit {

/// A day drawn in text: a line with the hours, and one for each kind of thing that the day has. A
/// cell is some twenty minutes, and the higher, the more of them. Main thread only.
[[nodiscard]] std::vector<std::string> historyBar(const HistoryTimeline& timeline,
                                                  const LocalDay& day, HistoryTexts::Style style);

}  // namespace staylit

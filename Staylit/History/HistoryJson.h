#pragma once

#include <cstdint>
#include <string>

#include "Staylit/History/HistoryTimeline.h"

namespace staylit {

/// Of the JSON form. Grows when a member goes or means something else; not when one is added.
inline constexpr std::int64_t kHistoryJsonVersion = 1;

/// A timeline, and the events between its two ends, as a JSON object on one line. Main thread only.
[[nodiscard]] std::string historyJson(const HistoryTimeline& timeline, const History& history);

}  // namespace staylit

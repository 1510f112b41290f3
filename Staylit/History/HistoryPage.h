#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "Staylit/History/HistoryTimeline.h"
#include "Staylit/History/PageDay.h"
#include "Tidewell/Ports/Clock.h"

namespace staylit {

/// The history as one web page that needs nothing else: an answer in a sentence, then for each week
/// an overview and sums, then each day as a drawing and as a table. The newest comes first.
///
/// A pure function of its arguments and of the computer's time zone. The page loads nothing, and
/// its own policy forbids a browser to load anything on its behalf. It is well-formed XML as well.
/// Main thread only.
class HistoryPage {
 public:
  /// `days` are whole local days that follow each other, the oldest first. `version` is the
  /// program's name and version.
  HistoryPage(std::vector<HistoryTimeline> days, tidewell::WallTime now, std::string version);

  [[nodiscard]] std::string text() const;

 private:
  /// The days of one week, as places in `days_`.
  struct Week {
    std::size_t begin;
    std::size_t end;
  };

  [[nodiscard]] std::vector<Week> weeks() const;
  [[nodiscard]] HistorySums sums(const Week& week) const;
  /// For how long no program ran.
  [[nodiscard]] std::chrono::nanoseconds unknown(const Week& week) const;
  [[nodiscard]] std::string range(std::size_t begin, std::size_t end) const;
  [[nodiscard]] std::string header() const;
  [[nodiscard]] std::string answer(const HistorySums& sums) const;
  [[nodiscard]] std::string more(const HistorySums& sums) const;
  [[nodiscard]] std::string weekSection(const Week& week) const;
  [[nodiscard]] std::string daySection(const PageDay& day) const;
  [[nodiscard]] std::string footer() const;
  [[nodiscard]] bool isOneDay() const { return days_.size() == 1; }

  std::vector<PageDay> days_;
  tidewell::WallTime now_;
  std::string version_;
};

}  // namespace staylit

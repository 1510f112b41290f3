#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Staylit/History/HistoryTimeline.h"
#include "Staylit/History/PageDay.h"

namespace staylit {

/// Draws one day of the history as lanes of marks over the hours of the day. Each mark is a link to
/// the line of the table (`DayTable`) that tells the same in words. All places are parts of the
/// width, so a drawing fits whatever it stands in. Main thread only; the day must outlive it.
class DayDrawing {
 public:
  explicit DayDrawing(const PageDay& day) : day_(day) {}

  /// A table whose rows are the lanes: the name, the drawing and the sum of each.
  [[nodiscard]] std::string lanes() const;

  /// The holds and the sleep of the day in one line.
  [[nodiscard]] std::string strip() const;

  /// The hours and the times at which nothing is known. The page must have this once, because all
  /// drawings of the day use it.
  [[nodiscard]] std::string background() const;
  /// The scale above the lanes.
  [[nodiscard]] std::string hours() const;

 private:
  struct Lane {
    std::string name;  ///< In HTML.
    std::string marks;
    std::string sum;           ///< In HTML.
    bool beginsGroup = false;  ///< Whether there is some space before it.
  };

  [[nodiscard]] double fraction(tidewell::WallTime time) const;
  [[nodiscard]] std::string box(std::string_view look, const HistoryTimeline::Span& span, int top,
                                int height) const;
  [[nodiscard]] std::string mark(std::string_view look, const HistoryTimeline::Span& span,
                                 const std::string& row, const std::string& text) const;
  [[nodiscard]] std::string laneRow(const Lane& lane) const;
  [[nodiscard]] Lane holds() const;
  [[nodiscard]] Lane works(const HistorySums::Work& sum) const;
  [[nodiscard]] Lane otherWorks(std::size_t shown) const;
  void addWorks(std::vector<Lane>& lanes) const;
  void addPrevented(std::vector<Lane>& lanes) const;
  void addSpans(std::vector<Lane>& lanes, const std::vector<HistoryTimeline::Span>& spans,
                std::string_view look, char kind, const std::string& name) const;
  void addAskings(std::vector<Lane>& lanes) const;
  [[nodiscard]] std::string chargeRow() const;
  [[nodiscard]] std::string chargePath(bool isArea) const;

  const PageDay& day_;
};

}  // namespace staylit

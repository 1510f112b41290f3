#include "Staylit/History/HistoryBar.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <string_view>
#include <utility>

namespace staylit {
namespace {

using BarSpans = std::vector<std::pair<tidewell::WallTime, tidewell::WallTime>>;

constexpr std::int64_t kCells = 72;
constexpr std::string_view kNoLabel = "        ";
/// From nothing to the whole of a cell.
constexpr std::array<const char*, 9> kDrawn = {" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
constexpr std::array<const char*, 9> kPlain = {" ", ".", ".", ":", ":", "+", "+", "#", "#"};

struct Lane {
  std::string_view label;  ///< As long as `kNoLabel`.
  const char* colour;
  BarSpans spans;
};

BarSpans barSpans(const std::vector<HistoryTimeline::Span>& spans) {
  BarSpans result;
  for (const auto& span : spans)
    result.emplace_back(span.from, span.to);
  return result;
}

template <typename Element>
BarSpans barSpans(const std::vector<Element>& elements) {
  BarSpans result;
  for (const Element& element : elements)
    result.emplace_back(element.span.from, element.span.to);
  return result;
}

BarSpans barHolds(const HistoryTimeline& timeline, bool isGranted) {
  BarSpans result;
  for (const auto& hold : timeline.holds) {
    for (const auto& part : hold.parts) {
      if (part.isGranted() == isGranted) result.emplace_back(part.from, part.to);
    }
  }
  return result;
}

/// Where a cell begins.
tidewell::WallTime beginningOf(const LocalDay& day, std::int64_t cell) {
  return day.from + (day.to - day.from) * cell / kCells;
}

/// In eighths; at least one where anything is in the cell.
std::size_t heightOf(const BarSpans& spans, tidewell::WallTime from, tidewell::WallTime to) {
  constexpr std::int64_t kEighths = 8;
  using Length = std::chrono::nanoseconds;
  Length covered{};
  bool hasAny = false;
  for (const auto& [begin, end] : spans) {
    const Length common = std::min(end, to) - std::max(begin, from);
    hasAny = hasAny || common > Length::zero() || (begin == end && begin >= from && begin < to);
    covered += std::max(common, Length::zero());
  }
  if (!hasAny) return 0;
  const auto rounded = (kEighths * covered.count() + (to - from).count() / 2) / (to - from).count();
  return static_cast<std::size_t>(std::clamp<std::int64_t>(rounded, 1, kEighths));
}

std::string drawn(const Lane& lane, const LocalDay& day, HistoryTexts::Style style) {
  std::string cells;
  for (std::int64_t cell = 0; cell < kCells; ++cell) {
    const auto height = heightOf(lane.spans, beginningOf(day, cell), beginningOf(day, cell + 1));
    cells += (style.isUnicode ? kDrawn : kPlain)[height];
  }
  cells.erase(cells.find_last_not_of(' ') + 1);
  if (style.isColoured) cells = std::string("\x1B[") + lane.colour + "m" + cells + "\x1B[0m";
  return std::string(lane.label) + cells;
}

/// The hours at which the marks of the day stand: each third, by the clock on the wall.
std::string hourMarks(const LocalDay& day) {
  std::string line(kNoLabel);
  constexpr int kHoursOfAMark = 3;
  for (auto time = day.from; time < day.to; time += std::chrono::hours(1)) {
    const std::string clock = hourAndMinute(time);
    const int hour = 10 * (clock[0] - '0') + (clock[1] - '0');
    if (hour % kHoursOfAMark != 0) continue;
    const auto column = kNoLabel.size() +
                        static_cast<std::size_t>(kCells * (time - day.from) / (day.to - day.from));
    // Where the clocks are set back, an hour comes twice.
    if (!line.ends_with(' ') && line.size() >= column) continue;
    line.resize(std::max(line.size(), column), ' ');
    line += std::to_string(hour);
  }
  return line;
}

}  // namespace

std::vector<std::string> historyBar(const HistoryTimeline& timeline, const LocalDay& day,
                                    HistoryTexts::Style style) {
  const std::array<Lane, 6> lanes = {{{"held    ", "32", barHolds(timeline, true)},
                                      {"refused ", "31", barHolds(timeline, false)},
                                      {"blocked ", "33", barSpans(timeline.blocks)},
                                      {"paused  ", "35", barSpans(timeline.pauses)},
                                      {"asleep  ", "34", barSpans(timeline.sleeps)},
                                      {"battery ", "36", barSpans(timeline.onBattery)}}};
  std::vector<std::string> lines{hourMarks(day)};
  for (const Lane& lane : lanes) {
    const bool hasAny = std::ranges::any_of(lane.spans, [&day](const auto& span) {
      return span.first < day.to && (span.second > day.from || span.first >= day.from);
    });
    if (hasAny || &lane == lanes.begin()) lines.push_back(drawn(lane, day, style));
  }
  return lines;
}

}  // namespace staylit

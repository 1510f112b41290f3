#include "Staylit/History/PageRequest.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <utility>

#include "Staylit/History/HistoryPage.h"
#include "Staylit/History/LocalTimes.h"

namespace staylit {

namespace {

/// When the first of `days` begins that the page has: days before anything was kept would say
/// nothing. A week is enough to say that nothing was kept at all.
tidewell::WallTime beginningOfPage(const History& history, const HistoryRequest::Range& days) {
  const auto end = days.to - std::chrono::nanoseconds(1);
  const auto kept = timelineOf(history, localDayOf(days.from).from, localDayOf(end).to);
  constexpr auto kOthersOfAWeek = std::chrono::days(6);
  const auto first =
      kept.runs.empty() ? std::min(end, history.now) - kOthersOfAWeek : kept.runs.front().span.from;
  return std::max(days.from, std::min(first, history.now));
}

}  // namespace

std::optional<PageRequest> PageRequest::in(const std::vector<std::string>& arguments) {
  const auto has = [&arguments](const char* option) {
    return std::ranges::find(arguments, option) != arguments.end();
  };
  const auto named = HistoryRequest::in(arguments);
  if (!named || !(has("--html") || has("--open"))) return std::nullopt;
  PageRequest request;
  request.opens = has("--open");
  if (has("--since")) request.days.since = named->since;
  request.days.until = named->until;
  for (std::size_t index = 0; index + 1 < arguments.size(); ++index) {
    if (arguments[index] == "--html") request.file = arguments[index + 1];
  }
  return request;
}

PageRequest::Page PageRequest::make(const History& history, const std::string& version) const {
  const auto range = days.range(history.now);
  if (const auto* why = std::get_if<std::string>(&range)) return {"", *why};
  const auto& asked = std::get<HistoryRequest::Range>(range);
  std::vector<HistoryTimeline> timelines;
  for (const LocalDay& day : localDaysBetween(beginningOfPage(history, asked), asked.to)) {
    if (day.from <= history.now) timelines.push_back(timelineOf(history, day.from, day.to));
  }
  if (timelines.empty()) return {"", "the days that are asked for are still to come"};
  return {HistoryPage(std::move(timelines), history.now, version).text(), ""};
}

}  // namespace staylit

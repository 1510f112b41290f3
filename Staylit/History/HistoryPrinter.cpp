#include "Staylit/History/HistoryPrinter.h"

#include <algorithm>

#include "Staylit/History/HistoryJson.h"
#include "Staylit/History/LocalTimes.h"

namespace staylit {
namespace {

constexpr const char* kWhen =
    "it may be 2026-11-21, \"2026-11-21 14:30\", 14:30, today, yesterday, now, or 7d, 12h or 30m "
    "ago";

std::string noTime(const std::string& option, const std::string& text) {
  return option + " does not understand \"" + text + "\": " + kWhen;
}

}  // namespace

std::optional<HistoryRequest> HistoryRequest::in(const std::vector<std::string>& arguments) {
  const auto has = [&arguments](const char* option) {
    return std::ranges::find(arguments, option) != arguments.end();
  };
  if (!has("--history") || has("--diagnose")) return std::nullopt;
  HistoryRequest request;
  request.form = has("--json") ? Form::json : Form::text;
  for (std::size_t index = 0; index + 1 < arguments.size(); ++index) {
    if (arguments[index] == "--since") request.since = arguments[index + 1];
    if (arguments[index] == "--until") request.until = arguments[index + 1];
  }
  return request;
}

std::variant<HistoryRequest::Range, std::string> HistoryRequest::range(
    tidewell::WallTime now) const {
  const auto from = timeMeant(since, now, false);
  if (!from) return noTime("--since", since);
  const auto to = until.empty() ? localDayOf(now).to : timeMeant(until, now, true);
  if (!to) return noTime("--until", until);
  if (*to <= *from) {
    return "nothing lies between " + since + " and " + (until.empty() ? "the end of today" : until);
  }
  return Range{*from, *to};
}

HistoryPrinter::Exit HistoryPrinter::print(const Source& source, const HistoryRequest& request,
                                           tidewell::Console& console, HistoryTexts::Style style) {
  const auto range = request.range(source.history.now);
  if (const auto* why = std::get_if<std::string>(&range)) {
    console.writeError("staylit: " + *why + "\n");
    return trouble;
  }
  if (!source.error.empty()) {
    console.writeError("staylit: the history in " + source.place +
                       " cannot be read: " + source.error + "\n");
    return trouble;
  }
  const auto& [from, to] = std::get<HistoryRequest::Range>(range);
  const std::string howToSwitchOn =
      source.isSwitchedOn ? ""
                          : "The history is switched off: set enabled = true in the table "
                            "[history] of the settings file.";
  if (request.form == HistoryRequest::Form::json) {
    console.printLine(historyJson(timelineOf(source.history, from, to), source.history));
  } else if (source.history.events.empty()) {
    console.printLine("There is no history in " + source.place +
                      (source.isSwitchedOn ? ". Staylit keeps one while it runs." : "."));
  } else {
    for (const std::string& line : HistoryTexts::lines(source.history, from, to, style))
      console.printLine(line);
  }
  if (!howToSwitchOn.empty()) console.writeError(howToSwitchOn + "\n");
  return source.history.events.empty() ? nothingKept : printed;
}

}  // namespace staylit

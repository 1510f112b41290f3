#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Staylit/History/HistoryPrinter.h"
#include "Tidewell/Ports/Clock.h"

namespace staylit {

/// That this start only makes a web page of the history.
struct PageRequest {
  std::string file;    ///< "-" is standard output; empty where the page is only to be shown.
  bool opens = false;  ///< Whether the page is to be shown in the browser.
  HistoryRequest days{HistoryRequest::Form::text, "6d", ""};  ///< A week, unless others are named.

  /// Absent unless `arguments`, all of the process, ask for that.
  static std::optional<PageRequest> in(const std::vector<std::string>& arguments);

  [[nodiscard]] bool isForStandardOutput() const { return file == "-"; }

  /// The page that `history` gives, of all days that have a part in the range, from the first day
  /// of which something was kept; else why there is none, for people. Where nothing was kept, the
  /// page says so of the last week of the range. `version` is the program's name and version. Main
  /// thread only.
  struct Page {
    std::string text;
    std::string error;
  };
  [[nodiscard]] Page make(const History& history, const std::string& version) const;

  friend bool operator==(const PageRequest&, const PageRequest&) = default;
};

}  // namespace staylit

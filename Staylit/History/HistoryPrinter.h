#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Staylit/History/HistoryTexts.h"
#include "Staylit/History/HistoryTimeline.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/Console.h"

namespace staylit {

/// That this start only asks what happened.
struct HistoryRequest {
  enum class Form { text, json };
  struct Range {
    tidewell::WallTime from{};
    tidewell::WallTime to{};
  };

  Form form = Form::text;
  std::string since = "today";  ///< As it was written.
  std::string until;

  /// Absent unless `arguments`, all of the process, ask for that.
  static std::optional<HistoryRequest> in(const std::vector<std::string>& arguments);

  /// From when to when; else why that is no range, for people. Main thread only.
  [[nodiscard]] std::variant<Range, std::string> range(tidewell::WallTime now) const;

  friend bool operator==(const HistoryRequest&, const HistoryRequest&) = default;
};

/// Prints what happened, for people or for programs. Main thread only.
class HistoryPrinter {
 public:
  /// With which the program ends.
  enum Exit : int { printed = 0, nothingKept = 1, trouble = 2 };

  struct Source {
    History history;
    std::string place;         ///< Where the history is kept, for people.
    std::string error;         ///< Why it cannot be read; empty when it can.
    bool isSwitchedOn = true;  ///< Whether a history is kept from now on.
  };

  static Exit print(const Source& source, const HistoryRequest& request, tidewell::Console& console,
                    HistoryTexts::Style style);
};

}  // namespace staylit

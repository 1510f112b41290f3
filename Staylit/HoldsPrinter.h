#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Staylit/HoldsReport.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/Console.h"

namespace staylit {

/// That this start only asks for all that keeps the machine awake.
struct HoldsRequest {
  enum class Form { text, json };
  Form form = Form::text;

  /// Absent unless `arguments`, all of the process, ask for that.
  static std::optional<HoldsRequest> in(const std::vector<std::string>& arguments);

  friend bool operator==(const HoldsRequest&, const HoldsRequest&) = default;
};

/// Prints all that keeps the machine from sleeping, for people or for programs. Main thread only.
class HoldsPrinter {
 public:
  /// With which the program ends.
  enum Exit : int { held = 0, notHeld = 1, trouble = 2 };

  /// `now` is the time at which `report` was made. Services that did not tell what they have are
  /// named on standard error. Returns the status with which to end: what is held counts before
  /// what could not be found out.
  static Exit print(const HoldsReport& report, const HoldsRequest& request,
                    tidewell::Console& console, tidewell::WallTime now);
};

}  // namespace staylit

#include "Staylit/HoldsPrinter.h"

#include <algorithm>

namespace staylit {

std::optional<HoldsRequest> HoldsRequest::in(const std::vector<std::string>& arguments) {
  const auto has = [&arguments](const char* option) {
    return std::ranges::find(arguments, option) != arguments.end();
  };
  if (!has("--holds") || has("--diagnose")) return std::nullopt;
  return HoldsRequest{has("--json") ? Form::json : Form::text};
}

HoldsPrinter::Exit HoldsPrinter::print(const HoldsReport& report, const HoldsRequest& request,
                                       tidewell::Console& console, tidewell::WallTime now) {
  if (request.form == HoldsRequest::Form::json) {
    console.printLine(report.json(now));
  } else {
    for (const std::string& line : report.lines(now))
      console.printLine(line);
  }
  for (const std::string& service : report.silent)
    console.writeError("staylit: " + service + " does not tell what it holds\n");
  if (!report.holds.empty()) return held;
  return !report.services.empty() && report.silent.empty() ? notHeld : trouble;
}

}  // namespace staylit

#include "Staylit/StatusPrinter.h"

#include <algorithm>

#include "Staylit/JsonText.h"
#include "Staylit/TimeTexts.h"

namespace staylit {
namespace {

constexpr const char* kNoneRuns = "Staylit does not run";

std::string jsonOfNone() {
  return JsonObject()
      .addNumber("version", StatusReport::kJsonVersion)
      .addText("state", "absent")
      .addFlag("held", false)
      .addText("summary", kNoneRuns)
      .text();
}

}  // namespace

std::optional<StatusRequest> StatusRequest::in(const std::vector<std::string>& arguments) {
  const auto has = [&arguments](const char* option) {
    return std::ranges::find(arguments, option) != arguments.end();
  };
  if (!has("--status") || has("--diagnose")) return std::nullopt;
  return StatusRequest{has("--json") ? Form::json : Form::text, has("--follow"), has("--system")};
}

StatusPrinter::StatusPrinter(StatusRequest request, tidewell::Console& console,
                             tidewell::Clock& clock)
    : request_(request), console_(console), clock_(clock) {}

void StatusPrinter::answered(const StatusReport& report) {
  exit_ = report.isHeld() ? held : notHeld;
  if (told_ && told_->saysTheSameAs(report)) return;
  told_ = report;
  isToldThatNoneRuns_ = false;
  const tidewell::WallTime now = clock_.wallTime();
  if (request_.form == StatusRequest::Form::json) {
    console_.printLine(report.json(now));
  } else if (request_.follows) {
    printChange(report.line());
  } else {
    for (const std::string& line : report.lines(now))
      console_.printLine(line);
  }
}

void StatusPrinter::foundNone() {
  exit_ = noneRuns;
  told_.reset();
  if (isToldThatNoneRuns_) return;
  isToldThatNoneRuns_ = true;
  if (request_.form == StatusRequest::Form::json) {
    console_.printLine(jsonOfNone());
  } else if (request_.follows) {
    printChange(kNoneRuns);
  } else {
    console_.printLine(kNoneRuns);
  }
}

void StatusPrinter::failed(const std::string& why) {
  exit_ = trouble;
  console_.writeError("staylit: " + why + "\n");
}

void StatusPrinter::printChange(const std::string& text) {
  console_.printLine(timeOfDay(clock_.wallTime()) + "  " + text);
}

}  // namespace staylit

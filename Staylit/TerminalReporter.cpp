#include "Staylit/TerminalReporter.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <variant>

namespace staylit {
namespace {

/// `status` without the parts that change while the state stays the same.
EngineStatus stateOf(EngineStatus status) {
  if (auto* winding = std::get_if<EngineStatus::Winding>(&status.value)) winding->secondsLeft = 0;
  if (auto* holding = std::get_if<EngineStatus::Holding>(&status.value)) {
    std::ranges::sort(holding->names);
  }
  return status;
}

std::string timeOfDay(tidewell::WallTime wallTime) {
  using std::chrono::system_clock;
  const std::time_t time =
      system_clock::to_time_t(std::chrono::time_point_cast<system_clock::duration>(wallTime));
  std::array<char, 16> text{};
  // `localtime` is safe here, because only the main thread asks for local time.
  const std::tm* local = std::localtime(&time);
  if (local) std::strftime(text.data(), text.size(), "%H:%M:%S", local);
  return text.data();
}

}  // namespace

TerminalReporter::TerminalReporter(StaylitEngine& engine, tidewell::Console& console,
                                   tidewell::Clock& clock)
    : engine_(engine),
      console_(console),
      clock_(clock),
      subscription_(
          engine.status().observe([this](const EngineStatus& next) { statusWillChange(next); })) {}

void TerminalReporter::tell(const std::string& text) {
  console_.printLine(timeOfDay(clock_.wallTime()) + "  " + text);
}

void TerminalReporter::statusWillChange(const EngineStatus& next) {
  EngineStatus state = stateOf(next);
  if (told_ == state) return;
  told_ = std::move(state);

  std::string line = next.summary();
  if (std::holds_alternative<EngineStatus::Holding>(next.value)) {
    for (const tidewell::BusyApp& app : engine_.busyApps().get()) {
      line += "  |  " + app.display + ": " + app.reason();
    }
    for (const std::string& name : engine_.assertingApps().get()) {
      line += "  |  " + name + ": asked to stay awake";
    }
  }
  tell(line);
}

}  // namespace staylit

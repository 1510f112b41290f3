#include "Staylit/TerminalReporter.h"

#include <variant>

#include "Staylit/StatusTexts.h"
#include "Staylit/TimeTexts.h"

namespace staylit {

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
  if (told_ && told_->isSameState(next)) return;
  told_ = next;
  const bool isHolding = std::holds_alternative<EngineStatus::Holding>(next.value);
  tell(next.summary() +
       (isHolding ? whatWorks(engine_.busyApps().get(), engine_.assertingApps().get()) : ""));
}

}  // namespace staylit

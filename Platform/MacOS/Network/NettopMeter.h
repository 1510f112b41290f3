#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/NetworkMeter.h"
#include "Tidewell/Ports/TaskLauncher.h"

namespace platform {

/// Runs the system's tool `nettop`, which prints the network bytes of every process, and reads what
/// it printed. Portable: the launcher decides what really runs.
///
/// Both ports must outlive it. A run that cannot be launched fails with the launcher's words, all
/// other failures are silent. A tool that runs on after its output is stopped 8 s later.
class NettopMeter : public tidewell::NetworkMeter {
 public:
  /// What the tool may print before its run counts as failed. A machine's whole process list
  /// takes a thousandth of it.
  static constexpr std::size_t kOutputLimit = std::size_t{64} << 20;

  NettopMeter(tidewell::TaskLauncher& launcher, tidewell::Clock& clock)
      : launcher_(launcher), clock_(clock) {}

  tidewell::NetworkMeasurement measure(tidewell::Cancellation& cancellation) override;

  /// Turns the tool's output, lines of "name.pid,bytes in,bytes out,", into totals. Lines of any
  /// other shape are skipped one by one; totals beyond 64 bits end the process.
  static tidewell::NetworkTotals parse(std::string_view text);

 private:
  std::optional<std::string> outputOf(tidewell::Task& task,
                                      const tidewell::Cancellation& cancellation);

  tidewell::TaskLauncher& launcher_;
  tidewell::Clock& clock_;
};

}  // namespace platform

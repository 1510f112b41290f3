#include "Tidewell/Log.h"

#include <cstdint>
#include <memory>
#include <mutex>

#include "Tidewell/Ports/Ports.h"

namespace tidewell {
namespace {

struct State {
  std::mutex mutex;
  std::string subsystem = "com.tidewell";
  bool verbose = false;
  std::shared_ptr<SystemLogger> logger;
  std::uint64_t generation = 0;  ///< Of the ports that `logger` was made from.
};

State& state() {
  static State only;
  return only;
}

/// The logger. It is made on first use, and again when other ports are installed. Null where no
/// ports are installed.
std::shared_ptr<SystemLogger> logger() {
  State& log = state();
  const std::lock_guard lock(log.mutex);
  if (!log.logger || log.generation != InstalledPorts::generation()) {
    const Ports* ports = InstalledPorts::currentIfAny();
    log.logger = ports ? ports->log->makeLogger(log.subsystem, "core") : nullptr;
    log.generation = InstalledPorts::generation();
  }
  return log.logger;
}

void write(LogType type, const std::string& message) {
  const auto destination = logger();
  if (destination && destination->isEnabled(type)) destination->emit(type, message);
}

}  // namespace

std::string Log::subsystem() {
  const std::lock_guard lock(state().mutex);
  return state().subsystem;
}

void Log::setSubsystem(const std::string& subsystem) {
  {
    const std::lock_guard lock(state().mutex);
    state().subsystem = subsystem;
    state().logger = nullptr;
  }
  logger();
}

bool Log::verbose() {
  const std::lock_guard lock(state().mutex);
  return state().verbose;
}

void Log::setVerbose(bool verbose) {
  const std::lock_guard lock(state().mutex);
  state().verbose = verbose;
}

void Log::info(const std::string& message) {
  write(LogType::info, message);
}

void Log::error(const std::string& message) {
  write(LogType::error, message);
}

void Log::diag(const std::string& message) {
  write(LogType::info, message);
  if (!verbose()) return;
  if (const Ports* ports = InstalledPorts::currentIfAny()) ports->console->printLine(message);
}

}  // namespace tidewell

#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>

#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/SerialQueue.h"
#include "Tidewell/Ports/TaskLauncher.h"

namespace tidewell {

/// Cumulative network bytes, in plus out, by process identifier.
using NetworkTotals = std::unordered_map<std::int32_t, std::uint64_t>;

/// Measures the network traffic of every process by running the system's tool off the main thread.
///
/// Owned by the activity monitor. `refresh` and `currentTotals` may be called from any one thread
/// and return at once; the tool runs on a private serial queue, at most once at a time. The three
/// ports must outlive it. A run that fails keeps the totals of the one before; only a tool that
/// cannot be launched is logged.
class NetworkSampler {
 public:
  /// What the tool may print before its run counts as failed. A machine's whole process list
  /// takes a thousandth of it.
  static constexpr std::size_t kOutputLimit = std::size_t{64} << 20;

  NetworkSampler(TaskLauncher& launcher, SerialQueues& queues, Clock& clock);
  ~NetworkSampler();
  NetworkSampler(const NetworkSampler&) = delete;
  NetworkSampler& operator=(const NetworkSampler&) = delete;

  /// Schedules one run of the tool, unless one is scheduled or running already.
  void refresh();

  /// The totals of the last run that succeeded; empty before the first has.
  [[nodiscard]] NetworkTotals currentTotals() const;

  /// Turns the tool's output, lines of "name.pid,bytes in,bytes out,", into totals. Lines of any
  /// other shape are skipped one by one; totals beyond 64 bits end the process.
  static NetworkTotals parse(std::string_view text);

 private:
  struct Shared;
  std::shared_ptr<Shared> shared_;
  std::unique_ptr<SerialQueue> queue_;
};

}  // namespace tidewell

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "Tidewell/Ports/ProcessTable.h"

namespace platform {

/// Makes a snapshot of what the system lists in its own way: the applications first, then the
/// processes in two calls. Asks no system itself, so that it can be tested anywhere.
class KernelSnapshot {
 public:
  using Applications = std::vector<std::shared_ptr<const tidewell::RunningApplication>>;

  struct Calls {
    std::function<Applications()> listApplications;
    /// With an empty `buffer`: the number of bytes that a list of all live processes needs now.
    /// Otherwise fills `buffer` in the kernel's order and returns the number of bytes written, four
    /// for each identifier. Less than 1 means failure.
    std::function<int(std::span<std::int32_t> buffer)> listPids;
  };

  explicit KernelSnapshot(Calls calls) : calls_(std::move(calls)) {}

  /// Valid until the next call.
  tidewell::ProcessSnapshot take() {
    applications_ = calls_.listApplications();
    // Exactly as large as the first answer: what starts in between is seen by the next snapshot.
    pids_.assign(countOf(calls_.listPids({})), 0);
    if (!pids_.empty()) pids_.resize(std::min(pids_.size(), countOf(calls_.listPids(pids_))));
    return {pids_, applications_};
  }

 private:
  static std::size_t countOf(int bytes) {
    return bytes < 1 ? 0 : static_cast<std::size_t>(bytes) / sizeof(std::int32_t);
  }

  Calls calls_;
  Applications applications_;
  std::vector<std::int32_t> pids_;
};

}  // namespace platform

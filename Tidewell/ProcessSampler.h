#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "Tidewell/Ports/ProcessTable.h"
#include "Tidewell/Ports/RunningApplications.h"
#include "Tidewell/RawSample.h"
#include "Tidewell/SharedText.h"

namespace tidewell {

/// Takes snapshots of all live processes. Keeps no history and computes no rates.
///
/// The activity monitor owns it; main thread only. It never fails: a process that cannot be read is
/// left out. The table must outlive it.
class ProcessSampler {
 public:
  explicit ProcessSampler(ProcessTable& table);

  /// One snapshot, in the order of the kernel's process list. Valid until the next call. A process
  /// costs no allocation while the table says that its names cannot have changed.
  const std::vector<RawSample>& sample();

  /// The exact number of nanoseconds for `time` units of `timebase`. An overflow, or a `denom` of
  /// 0, ends the program.
  static std::uint64_t nanoseconds(std::uint64_t time, Timebase timebase);

  /// The name of the program at `path`: the name of the innermost bundle (".app") that it lies in,
  /// or else its file name. Empty only for an empty path.
  static std::string_view nameFromPath(std::string_view path);

 private:
  using Application = std::shared_ptr<const RunningApplication>;

  /// The program that a sample's names belong to.
  struct Program {
    std::uint32_t version = 0;  ///< 0 if the table cannot tell.
    std::uint64_t startTime = 0;
    bool operator==(const Program&) const = default;
  };

  void refreshGUIApps(std::span<const Application> all);
  [[nodiscard]] const RunningApplication* guiApp(std::int32_t pid) const;
  void livePIDs(std::span<const std::int32_t> all);
  std::string_view executableName(std::int32_t pid, std::string_view fallback);
  bool fill(std::int32_t pid, std::size_t place);
  bool fillNames(std::int32_t pid, RawSample& sample);
  Timebase machTimebase();

  ProcessTable& table_;
  /// Ascending by process identifier. Unlike a map, a vector is refilled every tick without any
  /// allocation.
  std::vector<Application> guiApps_;
  std::optional<Timebase> machTimebase_;
  std::vector<std::int32_t> pids_;
  std::vector<RawSample> snapshot_;
  std::vector<Program> programs_;  ///< One for each sample.
  SharedTexts names_;
};

}  // namespace tidewell

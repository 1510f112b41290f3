#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// The control groups of the unified hierarchy in which processes were found, and the CPU time that
/// the kernel has counted for each. Main thread only.
class ControlGroups {
 public:
  /// Where the unified hierarchy is mounted, as `mounts` tells (proc(5)); empty for nowhere.
  static std::string mountPoint(std::string_view mounts);
  /// The same for this machine.
  static std::string mountPoint();

  /// `root` is a mount point, or a folder of the same shape; empty for none.
  explicit ControlGroups(std::string root) : root_(std::move(root)) {}

  /// The number of the group that `/proc/<pid>/cgroup` names; 0 for none, for the root, which is
  /// the whole machine, and for a group outside our namespace of groups.
  std::int32_t number(std::string_view file);

  /// Microseconds that the processes of the group, and of those below it, have used since it was
  /// made. Absent for a group that is gone.
  std::optional<std::uint64_t> microseconds(std::int32_t number);

  /// The processes that are in the group now; 0 stands for one of another process namespace. Absent
  /// for a group that is gone, or that has others below it, and where threads have groups.
  std::optional<std::vector<std::int32_t>> members(std::int32_t number);

  /// Forgets the groups whose number `isUsed` denies.
  void keepOnly(const std::function<bool(std::int32_t number)>& isUsed);

 private:
  std::string root_;
  std::map<std::string, std::int32_t, std::less<>> numbers_;  ///< By path.
  std::map<std::int32_t, std::string> paths_;
  std::int32_t last_ = 0;
};

}  // namespace platform

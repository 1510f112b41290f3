#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// What an application is called. Shared by all its processes; immutable.
struct ApplicationIdentity {
  std::optional<std::string> bundleIdentifier;
  std::optional<std::string> localizedName;
};

/// What is known of a process when its application is looked for. Valid during the call only.
struct ProcessFacts {
  std::int32_t pid;
  std::uint64_t startTicks;
  std::int32_t session;
  bool hasTerminal;
  std::string_view program;  ///< Path of the executable file.
  std::string_view cgroup;   ///< Content of `/proc/<pid>/cgroup`; empty if unreadable.
};

/// Tells which desktop application a process belongs to. Main thread only.
class ApplicationResolver {
 public:
  virtual ~ApplicationResolver() = default;

  /// Null for a process of no application.
  virtual std::shared_ptr<const ApplicationIdentity> applicationOf(const ProcessFacts& facts) = 0;

  /// Called every half a minute or so: a time to look whether applications were installed.
  virtual void refresh() = 0;
};

}  // namespace platform

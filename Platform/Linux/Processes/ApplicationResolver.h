#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// The names of an application. All its processes share one; immutable.
struct ApplicationIdentity {
  std::optional<std::string> bundleIdentifier;
  std::optional<std::string> localizedName;
};

/// What is known of a process whose application is looked for. The texts are valid during the call
/// only.
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

  /// The application that the process belongs to, or null when it belongs to none.
  virtual std::shared_ptr<const ApplicationIdentity> applicationOf(const ProcessFacts& facts) = 0;

  /// Looks for applications that were installed or removed meanwhile. Called about every half a
  /// minute.
  virtual void refresh() = 0;
};

}  // namespace platform

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace tidewell {

/// One process that the desktop knows as (part of) an application.
///
/// Shared by whoever looks at it; main thread only. Its properties may cost a query the first
/// time, so they are asked only of processes that matter; they do not change.
class RunningApplication {
 public:
  virtual ~RunningApplication() = default;
  [[nodiscard]] virtual std::int32_t processIdentifier() const = 0;
  /// The application's identifier, for example "org.mozilla.firefox"; absent when it has none.
  [[nodiscard]] virtual const std::optional<std::string>& bundleIdentifier() const = 0;
  /// The name a person knows it by, in the user's language; absent when it has none.
  [[nodiscard]] virtual const std::optional<std::string>& localizedName() const = 0;
};

/// Names single processes; all running applications together are in `ProcessTable::snapshot`. Main
/// thread only; nothing here fails, what is unknown is absent.
class RunningApplications {
 public:
  virtual ~RunningApplications() = default;

  /// What names process `pid`, or null for a process that nobody can name.
  virtual std::shared_ptr<const RunningApplication> withProcessIdentifier(std::int32_t pid) = 0;
};

}  // namespace tidewell

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace tidewell {

/// One process that the desktop knows as (part of) an application.
///
/// All who look at it share it. Main thread only. Its properties do not change. The first look at a
/// property may cost a query, so look only at those of processes that matter.
class RunningApplication {
 public:
  virtual ~RunningApplication() = default;
  [[nodiscard]] virtual std::int32_t processIdentifier() const = 0;
  /// The application's identifier, for example "org.mozilla.firefox"; absent when it has none.
  [[nodiscard]] virtual const std::optional<std::string>& bundleIdentifier() const = 0;
  /// The name a person knows it by, in the user's language; absent when it has none.
  [[nodiscard]] virtual const std::optional<std::string>& localizedName() const = 0;
};

/// Names single processes. (All running applications together are in `ProcessTable::snapshot`.)
/// Main thread only. Nothing here fails; what is unknown is absent.
class RunningApplications {
 public:
  virtual ~RunningApplications() = default;

  /// What gives process `pid` its name: its application, as a rule. Null when nothing names it.
  virtual std::shared_ptr<const RunningApplication> withProcessIdentifier(std::int32_t pid) = 0;
};

}  // namespace tidewell

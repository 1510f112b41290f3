#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "Platform/Linux/Applications/DesktopFiles.h"
#include "Platform/Linux/Applications/UnitName.h"
#include "Platform/Linux/Processes/ApplicationResolver.h"

namespace platform {

/// Finds the desktop application of a process: that of its unit, else the one that its program
/// belongs to. Main thread only; `files` must outlive it.
///
/// A process in an application's unit belongs to the application, unless it has a terminal and a
/// session of its own: what is started in a terminal window is itself, not the terminal.
class DesktopApplications : public ApplicationResolver {
 public:
  explicit DesktopApplications(DesktopFiles& files);

  std::shared_ptr<const ApplicationIdentity> applicationOf(const ProcessFacts& facts) override;
  void refresh() override;

 private:
  using Identity = std::shared_ptr<const ApplicationIdentity>;

  /// A unit that was met.
  struct Unit {
    Identity application;  ///< Null for a unit that names no installed application.
    /// The unit's oldest process, as far as it was seen, is its main one.
    std::uint64_t mainStart = UINT64_MAX;
    std::int32_t mainSession = 0;
  };

  Unit& unit(const UnitName& name);
  Identity applicationOfUnit(const UnitName& name);
  Identity identityOf(const DesktopApplication& application);

  DesktopFiles& files_;
  std::map<std::string, Unit, std::less<>> units_;             ///< By control group.
  std::map<std::string, Identity, std::less<>> byIdentifier_;  ///< One for all its processes.
};

}  // namespace platform

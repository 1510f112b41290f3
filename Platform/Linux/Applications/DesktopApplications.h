#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "Platform/Linux/Applications/DesktopFiles.h"
#include "Platform/Linux/Applications/UnitName.h"
#include "Platform/Linux/Processes/ApplicationResolver.h"

namespace platform {

/// Finds the desktop application of a process: the application of the process's unit, or else the
/// one that the process's program belongs to. Main thread only; `files` must outlive it.
///
/// A process in an application's unit belongs to the application, unless the process has a terminal
/// and a session of its own: a program that was started in a terminal window counts as itself, not
/// as the terminal.
class DesktopApplications : public ApplicationResolver {
 public:
  explicit DesktopApplications(DesktopFiles& files);

  std::shared_ptr<const ApplicationIdentity> applicationOf(const ProcessFacts& facts) override;
  void refresh() override;

 private:
  using Identity = std::shared_ptr<const ApplicationIdentity>;

  /// What is remembered of a unit.
  struct Unit {
    Identity application;  ///< Null for a unit that names no installed application.
    /// The main process of a unit is the oldest one that was seen in it. These are its start, in
    /// ticks of the kernel's clock, and its session, which is one of processes and not of a login.
    std::uint64_t mainStart = UINT64_MAX;
    std::int32_t mainSession = 0;
  };

  Unit& unit(const UnitName& name);
  Identity applicationOfUnit(const UnitName& name);
  Identity identityOf(const DesktopApplication& application);

  DesktopFiles& files_;
  std::map<std::string, Unit, std::less<>> units_;  ///< By control group.
  /// One identity for all processes of an application.
  std::map<std::string, Identity, std::less<>> byIdentifier_;
};

}  // namespace platform

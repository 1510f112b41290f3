#pragma once

#include <cstdint>
#include <memory>

#include "Tidewell/Ports/AssertionTable.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/Console.h"
#include "Tidewell/Ports/Defaults.h"
#include "Tidewell/Ports/FileManager.h"
#include "Tidewell/Ports/LidSwitch.h"
#include "Tidewell/Ports/LoginItem.h"
#include "Tidewell/Ports/MainLoop.h"
#include "Tidewell/Ports/NetworkMeter.h"
#include "Tidewell/Ports/PowerManagement.h"
#include "Tidewell/Ports/PowerSources.h"
#include "Tidewell/Ports/PrivilegedScripts.h"
#include "Tidewell/Ports/ProcessInfo.h"
#include "Tidewell/Ports/ProcessTable.h"
#include "Tidewell/Ports/RunningApplications.h"
#include "Tidewell/Ports/SerialQueue.h"
#include "Tidewell/Ports/SleepNotifications.h"
#include "Tidewell/Ports/SystemLog.h"
#include "Tidewell/Ports/TaskLauncher.h"
#include "Tidewell/Ports/Text.h"

namespace tidewell {

/// Everything that the core needs of a system, one object per port.
///
/// Made whole by `makePorts`, of which each system has its own, or by a test from fakes. Owned by
/// the process entry (or the test) and outlives every object that was given it. The members are
/// destroyed in reverse order, so the ones that others build on come first. A system has either
/// `lidSwitch` (Linux) or the four behind it (macOS); the others are null. All else is always set.
struct Ports {
  std::shared_ptr<SystemLog> log;
  std::shared_ptr<Clock> clock;
  std::shared_ptr<Console> console;
  std::shared_ptr<Text> text;
  std::shared_ptr<Defaults> defaults;
  std::shared_ptr<MainLoop> mainLoop;
  std::shared_ptr<ProcessTable> processTable;
  std::shared_ptr<RunningApplications> runningApplications;
  std::shared_ptr<SerialQueues> serialQueues;
  std::shared_ptr<NetworkMeter> networkMeter;
  std::shared_ptr<PowerSources> powerSources;
  std::shared_ptr<PowerManagement> powerManagement;
  std::shared_ptr<AssertionTable> assertionTable;
  std::shared_ptr<SleepNotifications> sleepNotifications;
  std::shared_ptr<LoginItem> loginItem;
  std::shared_ptr<LidSwitch> lidSwitch;
  // `ClamshellController` alone asks these, where there is no lid switch: they are null on Linux.
  std::shared_ptr<ProcessInfo> processInfo;
  std::shared_ptr<TaskLauncher> taskLauncher;
  std::shared_ptr<PrivilegedScripts> privilegedScripts;
  std::shared_ptr<FileManager> fileManager;
};

/// Makes the process-wide `Ports` that the static namespaces (`Log`, `BatteryMonitor`,
/// `PowerAssertionReader`) and `Prefs::shared` reach the system through, for as long as it lives.
///
/// `AppMain` installs one before anything else runs; a test installs its own for its scope, and
/// the former one comes back afterwards. Install and remove on the main thread only, while no
/// other thread uses them.
class InstalledPorts {
 public:
  explicit InstalledPorts(Ports& ports);
  ~InstalledPorts();
  InstalledPorts(const InstalledPorts&) = delete;
  InstalledPorts& operator=(const InstalledPorts&) = delete;

  /// The installed ports. Ends the process with a message when there are none.
  static Ports& current();

  /// As `current`, but null when there are none.
  static Ports* currentIfAny();

  /// Changes with every installation and removal, so that what was built on former ports shows.
  static std::uint64_t generation();

 private:
  Ports* former_;
};

}  // namespace tidewell

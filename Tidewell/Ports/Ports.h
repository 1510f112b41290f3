#pragma once

#include <cstdint>
#include <memory>

#include "Tidewell/Ports/AssertionTable.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/Console.h"
#include "Tidewell/Ports/Defaults.h"
#include "Tidewell/Ports/FileManager.h"
#include "Tidewell/Ports/LidSwitch.h"
#include "Tidewell/Ports/LineStore.h"
#include "Tidewell/Ports/LoginItem.h"
#include "Tidewell/Ports/MainLoop.h"
#include "Tidewell/Ports/NetworkMeter.h"
#include "Tidewell/Ports/PowerManagement.h"
#include "Tidewell/Ports/PowerSources.h"
#include "Tidewell/Ports/PrivateFolder.h"
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
/// Each system has its own `makePorts`, which sets all members; a test sets fakes. The process
/// entry (or the test) owns this object, which outlives every object that was given it. The members
/// are destroyed in reverse order, so a member comes after those that it uses. A system has either
/// `lidSwitch` (Linux) or the four members after it (macOS); the others of these five are null. All
/// other members but the last are always set.
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
  // Only `ClamshellController` uses these, where there is no lid switch. They are null on Linux.
  std::shared_ptr<ProcessInfo> processInfo;
  std::shared_ptr<TaskLauncher> taskLauncher;
  std::shared_ptr<PrivilegedScripts> privilegedScripts;
  std::shared_ptr<FileManager> fileManager;
  /// For the recording of the last day. Null where none is kept.
  std::shared_ptr<PrivateFolder> ringFolder = nullptr;
  /// The lines of the history. Null where none is kept.
  std::shared_ptr<LineStore> historyLines = nullptr;
};

/// Installs `Ports` for the whole process, for as long as this object lives. The static classes
/// (`Log`, `BatteryMonitor`, `PowerAssertionReader`, `ClamshellController`) and `Prefs::shared`
/// reach the system through the installed ports.
///
/// `AppMain` installs the ports before anything else runs. A test installs its own for its scope,
/// and the former ones are installed again afterwards. Install and remove ports on the main thread
/// only, while no other thread uses them.
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

  /// A number that changes with every installation and removal. Whoever keeps something that was
  /// made from the ports can tell by it that the ports are others now.
  static std::uint64_t generation();

 private:
  Ports* former_;
};

}  // namespace tidewell

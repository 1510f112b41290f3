#include <unistd.h>

#include <algorithm>
#include <memory>
#include <thread>

#include "Platform/MacOS/Applications/WorkspaceRunningApplications.h"
#include "Platform/MacOS/Log/UnifiedLog.h"
#include "Platform/MacOS/Loop/DispatchSerialQueues.h"
#include "Platform/MacOS/Loop/RunLoopMain.h"
#include "Platform/MacOS/Network/NettopMeter.h"
#include "Platform/MacOS/Power/IOKitPowerSources.h"
#include "Platform/MacOS/Processes/FoundationProcessInfo.h"
#include "Platform/MacOS/Processes/LibprocProcessTable.h"
#include "Platform/MacOS/Settings/HistoryFolder.h"
#include "Platform/MacOS/Settings/MainAppLoginItem.h"
#include "Platform/MacOS/Settings/RingFolder.h"
#include "Platform/MacOS/Settings/UserDefaultsStore.h"
#include "Platform/MacOS/Sleep/IOKitAssertionTable.h"
#include "Platform/MacOS/Sleep/IOKitPowerManagement.h"
#include "Platform/MacOS/Sleep/WorkspaceSleepNotifications.h"
#include "Platform/MacOS/Tasks/AppleScriptRunner.h"
#include "Platform/MacOS/Text/FoundationText.h"
#include "Platform/MacOS/Text/LocalizedDescription.h"
#include "Platform/MacOS/Time/FoundationClock.h"
#include "Platform/MakePorts.h"
#include "Platform/Posix/Files/HomeFolder.h"
#include "Platform/Posix/Files/PosixPrivateFolder.h"
#include "Platform/Posix/Files/QueuedLineStore.h"
#include "Platform/Posix/PosixConsole.h"
#include "Platform/Posix/Tasks/PosixFileManager.h"
#include "Platform/Posix/Tasks/SpawnedTaskLauncher.h"
#include "Tidewell/Accounting/AccountDirectory.h"
#include "Tidewell/Accounting/ConservedProcesses.h"

namespace platform {
namespace {

/// The process table, with all that it stands on. What the work of
/// ended processes gains over the plain table was measured on Linux only.
struct ProcessSources {
  /// A child that is older than the first pass is no tool of the program. So the first pass comes
  /// before the program can start one.
  ProcessSources() { conserved.snapshot(); }

  WorkspaceRunningApplications applications;
  LibprocProcessTable table{[this] { return applications.all(); }};
  FoundationClock clock;
  /// The system's own tool measures the network, process by process, so nobody asks here.
  tidewell::AccountDirectory accounts;
  tidewell::ConservedProcesses conserved{
      {table, clock, accounts, std::max(1U, std::thread::hardware_concurrency()), ::getpid()}};
};

/// The network meter and what it runs the tool with.
struct NetworkTool {
  SpawnedTaskLauncher launcher{localizedDescription};
  FoundationClock clock;
  NettopMeter meter{launcher, clock};
};

}  // namespace

std::unique_ptr<tidewell::Ports> makePorts() {
  const auto mainLoop = std::make_shared<RunLoopMain>();
  auto ports = std::make_unique<tidewell::Ports>();
  ports->log = std::make_shared<UnifiedLog>();
  ports->clock = std::make_shared<FoundationClock>();
  ports->console = std::make_shared<PosixConsole>();
  ports->text = std::make_shared<FoundationText>();
  ports->defaults = std::make_shared<UserDefaultsStore>();
  ports->mainLoop = mainLoop;
  const auto processes = std::make_shared<ProcessSources>();
  ports->processTable = {processes, &processes->conserved};
  ports->runningApplications = {processes, &processes->applications};
  ports->serialQueues = std::make_shared<DispatchSerialQueues>();
  const auto networkTool = std::make_shared<NetworkTool>();
  ports->networkMeter = {networkTool, &networkTool->meter};
  ports->powerSources = std::make_shared<IOKitPowerSources>();
  ports->powerManagement = std::make_shared<IOKitPowerManagement>();
  ports->assertionTable = std::make_shared<IOKitAssertionTable>();
  ports->sleepNotifications = std::make_shared<WorkspaceSleepNotifications>(mainLoop);
  ports->processInfo = std::make_shared<FoundationProcessInfo>();
  ports->loginItem = std::make_shared<MainAppLoginItem>();
  ports->taskLauncher = std::make_shared<SpawnedTaskLauncher>(localizedDescription);
  ports->privilegedScripts = std::make_shared<AppleScriptRunner>();
  // A later start must find the watchdog's file again, whatever its environment is.
  ports->fileManager =
      std::make_shared<PosixFileManager>(lastingHomeFolder(), localizedDescription);
  ports->ringFolder =
      std::make_shared<PosixPrivateFolder>(ringFolder(), PosixPrivateFolder::Trust::own);
  ports->historyLines = std::make_shared<QueuedLineStore>(
      LineFiles(historyFolder(), localizedDescription), "the history",
      ports->serialQueues->make("com.staylit.history"));
  return ports;
}

}  // namespace platform

#include <memory>

#include "Platform/MacOS/DispatchSerialQueues.h"
#include "Platform/MacOS/FoundationClock.h"
#include "Platform/MacOS/FoundationText.h"
#include "Platform/MacOS/IOKitAssertionTable.h"
#include "Platform/MacOS/IOKitPowerManagement.h"
#include "Platform/MacOS/IOKitPowerSources.h"
#include "Platform/MacOS/LibprocProcessTable.h"
#include "Platform/MacOS/NSTaskLauncher.h"
#include "Platform/MacOS/RunLoopMain.h"
#include "Platform/MacOS/UnifiedLog.h"
#include "Platform/MacOS/UserDefaultsStore.h"
#include "Platform/MacOS/WorkspaceRunningApplications.h"
#include "Platform/MacOS/WorkspaceSleepNotifications.h"
#include "Platform/MakePorts.h"
#include "Platform/Posix/PosixConsole.h"

namespace platform {

std::unique_ptr<tidewell::Ports> makePorts() {
  const auto mainLoop = std::make_shared<RunLoopMain>();
  auto ports = std::make_unique<tidewell::Ports>();
  ports->log = std::make_shared<UnifiedLog>();
  ports->clock = std::make_shared<FoundationClock>();
  ports->console = std::make_shared<PosixConsole>();
  ports->text = std::make_shared<FoundationText>();
  ports->defaults = std::make_shared<UserDefaultsStore>();
  ports->mainLoop = mainLoop;
  ports->processTable = std::make_shared<LibprocProcessTable>();
  ports->runningApplications = std::make_shared<WorkspaceRunningApplications>();
  ports->serialQueues = std::make_shared<DispatchSerialQueues>();
  ports->networkTool = std::make_shared<NSTaskLauncher>();
  ports->powerSources = std::make_shared<IOKitPowerSources>();
  ports->powerManagement = std::make_shared<IOKitPowerManagement>();
  ports->assertionTable = std::make_shared<IOKitAssertionTable>();
  ports->sleepNotifications = std::make_shared<WorkspaceSleepNotifications>(mainLoop);
  return ports;
}

}  // namespace platform

#include "Platform/Linux/LinuxPorts.h"

#include <unistd.h>

#include <algorithm>
#include <thread>
#include <type_traits>
#include <utility>

#include "Platform/Linux/Applications/DesktopApplications.h"
#include "Platform/Linux/Applications/DesktopFiles.h"
#include "Platform/Linux/Applications/LinuxRunningApplications.h"
#include "Platform/Linux/Applications/NamedHolders.h"
#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Files/HistoryFolder.h"
#include "Platform/Linux/Files/OwnProgram.h"
#include "Platform/Linux/Files/XdgFolders.h"
#include "Platform/Linux/Log/JournalLog.h"
#include "Platform/Linux/Loop/ThreadQueue.h"
#include "Platform/Linux/Loop/ThreadQueues.h"
#include "Platform/Linux/Modules/Modules.h"
#include "Platform/Linux/Network/SocketMeter.h"
#include "Platform/Linux/Network/SteadyMeter.h"
#include "Platform/Linux/Power/UPowerSources.h"
#include "Platform/Linux/Proc/CpuClock.h"
#include "Platform/Linux/Proc/ProcFileSystem.h"
#include "Platform/Linux/Processes/LinuxProcessGroups.h"
#include "Platform/Linux/Processes/LinuxProcessTable.h"
#include "Platform/Linux/Processes/ProcessTracker.h"
#include "Platform/Linux/Settings/AutostartEntry.h"
#include "Platform/Linux/Settings/TomlDefaults.h"
#include "Platform/Linux/Sleep/InhibitorList.h"
#include "Platform/Linux/Sleep/LidInhibitor.h"
#include "Platform/Linux/Sleep/LogindSleepNotifications.h"
#include "Platform/Linux/Sleep/SleepInhibitors.h"
#include "Platform/Linux/Text/LazyText.h"
#include "Platform/Linux/Text/UnicodeModule.h"
#include "Platform/Linux/Time/SystemClock.h"
#include "Platform/MakePorts.h"
#include "Platform/Posix/Files/PosixPrivateFolder.h"
#include "Platform/Posix/Files/QueuedLineStore.h"
#include "Platform/Posix/PosixConsole.h"
#include "Tidewell/Accounting/AccountDirectory.h"
#include "Tidewell/Accounting/ConservedProcesses.h"

namespace platform {
namespace {

std::unique_ptr<tidewell::Text> loadUnicodeText() {
  void* address = loadFromModule(kUnicodeModule, kMakeText).address;
  return std::unique_ptr<tidewell::Text>(address ? reinterpret_cast<MakeText>(address)() : nullptr);
}

/// A disk that never answers must keep no hold alive, so the thread has its own descriptors.
std::unique_ptr<tidewell::SerialQueue> queueForTheDisk() {
  return std::make_unique<ThreadQueue>("staylit-history", ThreadQueue::Descriptors::own);
}

/// All adapters and the objects that they use, in the order of their construction.
struct LinuxSystem {
  LinuxSystem(std::shared_ptr<EventLoop> eventLoop, std::shared_ptr<Buses> bothBuses,
              std::filesystem::path settings)
      : loop(std::move(eventLoop)), buses(std::move(bothBuses)), defaults(std::move(settings)) {}

  std::shared_ptr<EventLoop> loop;
  std::shared_ptr<Buses> buses;
  JournalLog log;
  SystemClock clock;
  PosixConsole console;
  LazyText text{loadUnicodeText};
  TomlDefaults defaults;
  QueuedLineStore historyLines{LineFiles(historyFolder(), describeError), "the history",
                               queueForTheDisk()};
  Bus& systemBus = buses->system;
  Bus& sessionBus = buses->session;

  ProcFileSystem proc;
  KernelCpuClock cpuClock;
  DesktopFiles desktopFiles;
  DesktopApplications applications{desktopFiles};
  ProcessTracker tracker{ProcessTracker::Sources{proc, cpuClock, applications, text}};
  LinuxProcessTable processTable{tracker};
  LinuxProcessGroups processGroups{tracker};
  std::shared_ptr<NamedHolders> namedHolders = std::make_shared<NamedHolders>();
  LinuxRunningApplications runningApplications{tracker, namedHolders};
  tidewell::AccountDirectory accountDirectory;
  tidewell::ConservedProcesses conserved{{processTable, clock, accountDirectory,
                                          std::max(1U, std::thread::hardware_concurrency()),
                                          ::getpid(), &processGroups}};

  ThreadQueues serialQueues{loop.get()};
  SocketMeter socketMeter{&accountDirectory};
  SteadyMeter networkMeter{socketMeter};
  UPowerSources powerSources{systemBus};
  SleepInhibitors powerManagement{systemBus, sessionBus, *loop};
  InhibitorList assertionTable{systemBus, sessionBus, namedHolders};
  LogindSleepNotifications sleepNotifications{systemBus, *loop};
  AutostartEntry loginItem{ownProgram()};
  LidInhibitor lidSwitch{systemBus, *loop};
  PosixPrivateFolder ringFolder{platform::ringFolder(), PosixPrivateFolder::Trust::own};
};

}  // namespace

std::unique_ptr<tidewell::Ports> makeLinuxPorts(std::shared_ptr<EventLoop> loop,
                                                std::shared_ptr<Buses> buses,
                                                std::filesystem::path settings) {
  const auto system =
      std::make_shared<LinuxSystem>(std::move(loop), std::move(buses), std::move(settings));
  // Whoever holds one port keeps the whole system alive.
  const auto port = [&system](auto& adapter) {
    return std::shared_ptr<std::remove_reference_t<decltype(adapter)>>(system, &adapter);
  };
  auto ports = std::make_unique<tidewell::Ports>();
  ports->log = port(system->log);
  ports->clock = port(system->clock);
  ports->console = port(system->console);
  ports->text = port(system->text);
  ports->defaults = port(system->defaults);
  ports->mainLoop = port(*system->loop);
  ports->processTable = port(system->conserved);
  ports->runningApplications = port(system->runningApplications);
  ports->serialQueues = port(system->serialQueues);
  ports->networkMeter = port(system->networkMeter);
  ports->powerSources = port(system->powerSources);
  ports->powerManagement = port(system->powerManagement);
  ports->assertionTable = port(system->assertionTable);
  ports->sleepNotifications = port(system->sleepNotifications);
  ports->loginItem = port(system->loginItem);
  ports->lidSwitch = port(system->lidSwitch);
  ports->ringFolder = port(system->ringFolder);
  ports->historyLines = port(system->historyLines);
  return ports;
}

std::unique_ptr<tidewell::Ports> makeLinuxPorts(std::shared_ptr<EventLoop> loop,
                                                std::shared_ptr<Buses> buses) {
  return makeLinuxPorts(std::move(loop), std::move(buses), TomlDefaults::defaultPath());
}

std::unique_ptr<tidewell::Ports> makeLinuxPorts(std::shared_ptr<EventLoop> loop) {
  auto buses = std::make_shared<Buses>(*loop);
  return makeLinuxPorts(std::move(loop), std::move(buses));
}

std::shared_ptr<tidewell::Text> makeLinuxText() {
  return std::make_shared<LazyText>(loadUnicodeText);
}

std::unique_ptr<tidewell::Ports> makePorts() {
  return makeLinuxPorts(std::make_shared<EventLoop>());
}

}  // namespace platform

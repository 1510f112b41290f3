#include "Benchmarks/Detection/PlainPorts.h"

#include "Platform/Linux/Applications/DesktopApplications.h"
#include "Platform/Linux/Applications/DesktopFiles.h"
#include "Platform/Linux/Applications/LinuxRunningApplications.h"
#include "Platform/Linux/Applications/NamedHolders.h"
#include "Platform/Linux/Network/SocketMeter.h"
#include "Platform/Linux/Proc/CpuClock.h"
#include "Platform/Linux/Proc/ProcFileSystem.h"
#include "Platform/Linux/Processes/LinuxProcessTable.h"
#include "Platform/Linux/Processes/ProcessTracker.h"

namespace {

/// The adapters and what they stand on, in the order in which they are built.
struct PlainSystem {
  explicit PlainSystem(std::shared_ptr<tidewell::Text> sharedText) : text(std::move(sharedText)) {}

  std::shared_ptr<tidewell::Text> text;
  platform::ProcFileSystem proc;
  platform::KernelCpuClock cpuClock;
  platform::DesktopFiles desktopFiles;
  platform::DesktopApplications applications{desktopFiles};
  platform::ProcessTracker tracker{{proc, cpuClock, applications, *text}};
  platform::LinuxProcessTable processTable{tracker};
  platform::LinuxRunningApplications runningApplications{
      tracker, std::make_shared<platform::NamedHolders>()};
  platform::SocketMeter networkMeter;
};

}  // namespace

std::unique_ptr<tidewell::Ports> makePlainPorts(const tidewell::Ports& whole) {
  const auto system = std::make_shared<PlainSystem>(whole.text);
  auto ports = std::make_unique<tidewell::Ports>(whole);
  ports->processTable = {system, &system->processTable};
  ports->runningApplications = {system, &system->runningApplications};
  ports->networkMeter = {system, &system->networkMeter};
  return ports;
}

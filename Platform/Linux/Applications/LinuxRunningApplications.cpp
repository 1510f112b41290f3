#include "Platform/Linux/Applications/LinuxRunningApplications.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "Platform/Linux/Applications/ProductNames.h"
#include "Platform/Linux/Processes/LinuxApplication.h"
#include "Tidewell/ForeignText.h"
#include "Tidewell/ProcessSampler.h"

namespace platform {
namespace {

std::shared_ptr<const tidewell::RunningApplication> makeApplication(std::int32_t pid,
                                                                    ApplicationIdentity identity) {
  return std::make_shared<LinuxApplication>(
      pid, std::make_shared<const ApplicationIdentity>(std::move(identity)));
}

std::shared_ptr<const tidewell::RunningApplication> applicationFor(const TrackedProcess& process) {
  if (process.application) return process.application;
  // The path was cleaned where it was read.
  std::string name(tidewell::ProcessSampler::nameFromPath(process.path));
  // The kernel's short name is readable for everybody, even for another user's process.
  if (name.empty()) name = tidewell::cleaned(process.commText());
  return name.empty() ? nullptr : makeApplication(process.pid, {std::nullopt, std::move(name)});
}

}  // namespace

LinuxRunningApplications::LinuxRunningApplications(ProcessTracker& tracker,
                                                   std::shared_ptr<NamedHolders> namedHolders)
    : tracker_(tracker), namedHolders_(std::move(namedHolders)) {}

std::shared_ptr<const tidewell::RunningApplication> LinuxRunningApplications::withProcessIdentifier(
    std::int32_t pid) {
  if (const auto id = namedHolders_->applicationId(pid)) {
    return makeApplication(pid, {bundleIdentifierOf(*id), std::nullopt});
  }
  if (const TrackedProcess* process = tracker_.find(pid)) return applicationFor(*process);
  const auto process = tracker_.readNow(pid);
  return process ? applicationFor(*process) : nullptr;
}

}  // namespace platform

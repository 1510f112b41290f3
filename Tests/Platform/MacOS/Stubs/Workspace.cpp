#include "Tests/Platform/MacOS/Stubs/Workspace.h"

#include "Platform/MacOS/Applications/ApplicationIdentifier.h"
#include "Platform/MacOS/Power/LowPowerMode.h"

namespace platform {
namespace stub {

Workspace& Workspace::shared() {
  static Workspace workspace;
  return workspace;
}

}  // namespace stub

std::string applicationIdentifier(std::int32_t pid) {
  const auto& applications = stub::Workspace::shared().applications;
  const auto found = applications.find(pid);
  return found == applications.end() ? "" : found->second;
}

bool isLowPowerModeEnabled() {
  return stub::Workspace::shared().isLowPowerModeEnabled;
}

}  // namespace platform

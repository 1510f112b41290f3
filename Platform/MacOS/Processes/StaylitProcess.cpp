#include "Platform/MacOS/Processes/StaylitProcess.h"

#include <unistd.h>

#include <string>
#include <string_view>

#include "Platform/MacOS/Applications/ApplicationIdentifier.h"
#include "Platform/MacOS/Processes/ProgramPath.h"

namespace platform {
namespace {

constexpr std::string_view kProgram = "Staylit";
constexpr std::string_view kApplication = "com.staylit.app";

}  // namespace

bool isAStaylit(std::int32_t pid) {
  static const std::string own = programPath(getpid());
  const std::string path = programPath(pid);
  if (!path.empty() && path == own) return true;
  return std::string_view(path).substr(path.rfind('/') + 1) == kProgram ||
         applicationIdentifier(pid) == kApplication;
}

}  // namespace platform

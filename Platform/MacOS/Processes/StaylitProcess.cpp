#include "Platform/MacOS/Processes/StaylitProcess.h"

#include <unistd.h>

#include <string>
#include <string_view>

#include "Platform/MacOS/Applications/ApplicationIdentifier.h"
#include "Platform/MacOS/Processes/ProgramPath.h"

namespace platform {
namespace {

constexpr std::string_view kProgram = "Staylit";
constexpr std::string_view kProgramInFolder = "/Staylit";
constexpr std::string_view kApplication = "com.staylit.app";

}  // namespace

bool isAStaylit(std::int32_t pid) {
  static const std::string own = programPath(getpid());
  const std::string path = programPath(pid);
  if (!path.empty() && path == own) return true;
  return path == kProgram || path.ends_with(kProgramInFolder) ||
         applicationIdentifier(pid) == kApplication;
}

}  // namespace platform

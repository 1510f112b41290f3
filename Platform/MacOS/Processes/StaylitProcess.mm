#include "Platform/MacOS/Processes/StaylitProcess.h"

#import <AppKit/AppKit.h>

#include <unistd.h>

#include <string>
#include <string_view>

#include "Platform/MacOS/Processes/ProgramPath.h"

namespace platform {
namespace {

constexpr std::string_view kProgram = "Staylit";

bool hasStaylitsIdentifier(std::int32_t pid) {
  @autoreleasepool {
    NSRunningApplication* const application =
        [NSRunningApplication runningApplicationWithProcessIdentifier:pid];
    return [application.bundleIdentifier isEqualToString:@"com.staylit.app"];
  }
}

}  // namespace

bool isAStaylit(std::int32_t pid) {
  static const std::string own = programPath(getpid());
  const std::string path = programPath(pid);
  if (!path.empty() && path == own) return true;
  return std::string_view(path).substr(path.rfind('/') + 1) == kProgram ||
         hasStaylitsIdentifier(pid);
}

}  // namespace platform

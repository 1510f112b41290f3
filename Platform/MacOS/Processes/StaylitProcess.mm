#include "Platform/MacOS/Processes/StaylitProcess.h"

#import <AppKit/AppKit.h>

#include <libproc.h>
#include <unistd.h>

#include <array>
#include <string>
#include <string_view>

namespace platform {
namespace {

constexpr std::string_view kProgram = "Staylit";

/// Told for every user's processes; empty for one that is gone.
std::string programPath(std::int32_t pid) {
  std::array<char, PROC_PIDPATHINFO_MAXSIZE> buffer{};
  const int length = proc_pidpath(pid, buffer.data(), static_cast<std::uint32_t>(buffer.size()));
  return length < 1 ? "" : std::string(buffer.data(), static_cast<std::size_t>(length));
}

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

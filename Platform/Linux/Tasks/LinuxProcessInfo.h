#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "Tidewell/Ports/ProcessInfo.h"

namespace platform {

/// This process, as /proc shows it.
class LinuxProcessInfo : public tidewell::ProcessInfo {
 public:
  /// The kernel's name for it, of at most 15 bytes; that is what tools look processes up by.
  std::string processName() override;
};

/// Where this program lies, for starting it again. Empty when that cannot be told.
[[nodiscard]] std::filesystem::path ownProgram();

/// The program that an `exe` link names: without the mark that the kernel adds once the file has
/// been replaced, as an update does.
[[nodiscard]] std::filesystem::path programOfLink(std::string_view link);

}  // namespace platform

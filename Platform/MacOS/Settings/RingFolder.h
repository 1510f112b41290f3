#pragma once

#include <filesystem>

#include "Platform/Posix/Files/HomeFolder.h"

namespace platform {

/// Where the program keeps its recording of the last day; empty for a user without a home.
[[nodiscard]] inline std::filesystem::path ringFolder() {
  const std::filesystem::path home = homeFolder();
  return home.empty() ? home : home / "Library/Application Support/Staylit/Ring";
}

}  // namespace platform

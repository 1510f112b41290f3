#include "Platform/MacOS/Settings/HistoryFolder.h"

#include "Platform/Posix/Files/HomeFolder.h"

namespace platform {

std::filesystem::path historyFolder() {
  const std::filesystem::path home = lastingHomeFolder();
  return home.empty() ? home : home / "Library/Application Support/Staylit/History";
}

}  // namespace platform

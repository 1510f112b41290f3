#include "Platform/Linux/Files/HistoryFolder.h"

#include <cstdlib>

#include "Platform/Linux/Files/XdgFolders.h"

namespace platform {

std::filesystem::path historyFolder() {
  const char* stateDirectory = std::getenv("STATE_DIRECTORY");
  const auto given = absolutePaths(stateDirectory ? stateDirectory : "");
  if (!given.empty()) return given.front() / "history";
  const std::filesystem::path folder = xdgStateHome();
  return folder.empty() ? folder : folder / "staylit" / "history";
}

}  // namespace platform

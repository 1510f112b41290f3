#include "Platform/Linux/Files/XdgFolders.h"

#include <algorithm>
#include <cstdlib>

#include "Platform/Posix/Files/HomeFolder.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

/// Empty unless the variable holds an absolute path.
fs::path absoluteFrom(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && value[0] == '/' ? fs::path(value) : fs::path();
}

fs::path belowHome(const char* variable, const char* folder) {
  fs::path given = absoluteFrom(variable);
  if (!given.empty()) return given;
  const fs::path home = homeFolder();
  return home.empty() ? fs::path() : home / folder;
}

/// A user's own folder, if there is one, and then those that the variable lists.
std::vector<fs::path> ownAndShared(const fs::path& own, const char* variable,
                                   const std::vector<fs::path>& usual) {
  std::vector<fs::path> folders;
  if (!own.empty()) folders.push_back(own);
  const char* shared = std::getenv(variable);
  auto more = absolutePaths(shared == nullptr ? "" : shared);
  if (more.empty()) more = usual;
  folders.insert(folders.end(), more.begin(), more.end());
  return folders;
}

}  // namespace

fs::path xdgConfigHome() {
  return belowHome("XDG_CONFIG_HOME", ".config");
}

fs::path xdgCacheHome() {
  return belowHome("XDG_CACHE_HOME", ".cache");
}

fs::path xdgRuntimeFolder() {
  return absoluteFrom("XDG_RUNTIME_DIR");
}

fs::path xdgStateHome() {
  return belowHome("XDG_STATE_HOME", ".local/state");
}

fs::path ringFolder() {
  const fs::path state = xdgStateHome();
  return state.empty() ? state : state / "staylit" / "ring";
}

std::vector<fs::path> xdgDataFolders() {
  return ownAndShared(belowHome("XDG_DATA_HOME", ".local/share"), "XDG_DATA_DIRS",
                      {"/usr/local/share", "/usr/share"});
}

std::vector<fs::path> xdgConfigFolders() {
  return ownAndShared(xdgConfigHome(), "XDG_CONFIG_DIRS", {"/etc/xdg"});
}

std::vector<fs::path> absolutePaths(std::string_view list) {
  std::vector<fs::path> paths;
  while (!list.empty()) {
    const std::string_view path = list.substr(0, list.find(':'));
    if (path.starts_with('/')) paths.emplace_back(path);
    list.remove_prefix(std::min(path.size() + 1, list.size()));
  }
  return paths;
}

}  // namespace platform

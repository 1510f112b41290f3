#include "Platform/Linux/Tasks/LinuxFileManager.h"

#include <filesystem>
#include <system_error>

#include "Platform/Linux/Files/FileReplacement.h"
#include "Platform/Linux/Files/XdgFolders.h"

namespace platform {

namespace fs = std::filesystem;

std::string LinuxFileManager::homeDirectory() {
  std::string home = homeFolder().string();
  while (home.ends_with('/'))
    home.pop_back();
  return home;
}

std::optional<std::string> LinuxFileManager::createDirectory(const std::string& path) {
  std::error_code error;
  fs::create_directories(path, error);
  if (error) return path + ": " + error.message();
  return std::nullopt;
}

std::optional<std::string> LinuxFileManager::writeAtomically(const std::string& path,
                                                             const std::string& text) {
  FileReplacement replacement(path, text);
  if (replacement.error().empty() && replacement.commit()) return std::nullopt;
  return path + ": " + replacement.error();
}

bool LinuxFileManager::exists(const std::string& path) {
  std::error_code error;
  return fs::exists(path, error);
}

bool LinuxFileManager::remove(const std::string& path) {
  std::error_code error;
  return fs::remove(path, error);
}

}  // namespace platform

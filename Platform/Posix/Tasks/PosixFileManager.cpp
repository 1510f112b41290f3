#include "Platform/Posix/Tasks/PosixFileManager.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "Platform/Posix/Files/Descriptor.h"
#include "Platform/Posix/Files/HomeFolder.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

bool writeThrough(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(file, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return fsync(file) == 0;
}

std::string lastFailure(const std::string& path) {
  return path + ": " + std::generic_category().message(errno);
}

}  // namespace

std::string PosixFileManager::homeDirectory() {
  std::string home = homeFolder().string();
  while (home.ends_with('/'))
    home.pop_back();
  return home;
}

std::optional<std::string> PosixFileManager::createDirectory(const std::string& path) {
  std::error_code error;
  fs::create_directories(path, error);
  if (error) return path + ": " + error.message();
  return std::nullopt;
}

std::optional<std::string> PosixFileManager::writeAtomically(const std::string& path,
                                                             const std::string& text) {
  std::string temporary = path + ".XXXXXX";
  const Descriptor file(mkstemp(temporary.data()));
  if (!file) return lastFailure(path);
  if (writeThrough(file.get(), text) && std::rename(temporary.c_str(), path.c_str()) == 0)
    return std::nullopt;
  std::string failure = lastFailure(path);
  unlink(temporary.c_str());
  return failure;
}

bool PosixFileManager::exists(const std::string& path) {
  std::error_code error;
  return fs::exists(path, error);
}

bool PosixFileManager::remove(const std::string& path) {
  std::error_code error;
  return fs::remove(path, error);
}

}  // namespace platform

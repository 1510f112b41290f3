#include "Platform/Posix/Files/HomeFolder.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace platform {
namespace {

std::filesystem::path homeFromUserDatabase() {
  passwd entry{};
  passwd* found = nullptr;
  std::array<char, 4096> buffer{};
  if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) != 0 ||
      found == nullptr) {
    return {};
  }
  const std::filesystem::path home = entry.pw_dir;
  return home.is_absolute() ? home : std::filesystem::path();
}

}  // namespace

std::filesystem::path homeFolder() {
  const char* home = std::getenv("HOME");
  return home != nullptr && home[0] == '/' ? std::filesystem::path(home) : homeFromUserDatabase();
}

std::filesystem::path lastingHomeFolder() {
  std::filesystem::path home = homeFromUserDatabase();
  return home.empty() ? homeFolder() : home;
}

}  // namespace platform

#include "Platform/Linux/Tasks/LinuxProcessInfo.h"

#include <fstream>
#include <system_error>

#include "Tidewell/ForeignText.h"

namespace platform {

namespace fs = std::filesystem;

std::string LinuxProcessInfo::processName() {
  // Of the process, not of the thread that asks.
  std::ifstream file("/proc/self/comm");
  std::string name;
  std::getline(file, name);
  return tidewell::cleaned(name);
}

fs::path ownProgram() {
  std::error_code error;
  const fs::path link = fs::read_symlink("/proc/self/exe", error);
  return error ? fs::path() : programOfLink(link.native());
}

fs::path programOfLink(std::string_view link) {
  constexpr std::string_view kMark = " (deleted)";
  std::error_code error;
  if (!link.ends_with(kMark) || fs::exists(link, error)) return link;
  link.remove_suffix(kMark.size());
  return link;
}

}  // namespace platform

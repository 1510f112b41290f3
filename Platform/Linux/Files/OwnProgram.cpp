#include "Platform/Linux/Files/OwnProgram.h"

#include <system_error>

namespace platform {

namespace fs = std::filesystem;

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

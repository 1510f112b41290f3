#include "Staylit/Desktop/IconFolder.h"

#include <system_error>

namespace staylit {

std::filesystem::path iconFolder() {
  // Some hosts only look into a folder of this name, and take the one above for the program's.
  constexpr const char* folder = "share/staylit/icons";
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
  for (const auto& base : {program, program.parent_path()}) {
    if (std::filesystem::is_directory(base / folder, error)) return base / folder;
  }
  return {};
}

}  // namespace staylit

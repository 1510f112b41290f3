#include "Staylit/Desktop/StatusItem/StatusIcons.h"

#include <filesystem>
#include <system_error>

#include "Platform/Linux/Files/XdgFolders.h"
#include "Staylit/Desktop/StatusItem/IconNames.h"

namespace staylit {
namespace {

namespace fs = std::filesystem;

bool holdsIcons(const fs::path& themes) {
  std::error_code error;
  const std::string file = iconName("cup.and.saucer", false) + ".svg";
  return fs::exists(themes / "hicolor/scalable/status" / file, error);
}

}  // namespace

StatusIcons StatusIcons::ofThisProgram() {
  for (const fs::path& folder : platform::xdgDataFolders()) {
    if (holdsIcons(folder / "icons")) return {true, ""};
  }
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error).parent_path();
  // The folder lies beside the program in a build folder, or in an installation apart from the
  // desktop's.
  for (const fs::path& share : {program / "share", program.parent_path() / "share"}) {
    if (holdsIcons(share / "icons")) return {true, share / "icons"};
  }
  return {};
}

}  // namespace staylit

#include "Staylit/Desktop/StatusItem/StatusIcons.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "Platform/Linux/Files/XdgFolders.h"

namespace staylit {
namespace {

namespace fs = std::filesystem;

bool holdsIcons(const fs::path& themes) {
  std::error_code error;
  const std::string file = iconName("cup.and.saucer", false) + ".svg";
  return fs::exists(themes / "hicolor/scalable/status" / file, error);
}

}  // namespace

std::string iconName(std::string_view symbol, bool isDimmed) {
  std::string name(symbol);
  std::ranges::replace(name, '.', '-');
  return "staylit-" + name + (isDimmed ? "-dimmed-symbolic" : "-symbolic");
}

StatusIcons StatusIcons::ofThisProgram() {
  for (const fs::path& folder : platform::xdgDataFolders()) {
    if (holdsIcons(folder / "icons")) return {true, ""};
  }
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error).parent_path();
  // In a build folder, or in an installation apart from the desktop's, the icons lie beside the
  // program.
  for (const fs::path& share : {program / "share", program.parent_path() / "share"}) {
    if (holdsIcons(share / "icons")) return {true, share / "icons"};
  }
  return {};
}

}  // namespace staylit

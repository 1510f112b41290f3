#include "Platform/Linux/Applications/ApplicationPlaces.h"

#include <algorithm>
#include <cstdlib>

#include "Platform/Linux/Files/XdgFolders.h"
#include "Platform/Linux/Text/EnvironmentLocale.h"
#include "Platform/Posix/Files/HomeFolder.h"

namespace platform {

namespace fs = std::filesystem;

ApplicationPlaces ApplicationPlaces::ofEnvironment() {
  std::vector<fs::path> data = xdgDataFolders();
  data.push_back(homeFolder() / ".local/share/flatpak/exports/share");
  data.emplace_back("/var/lib/flatpak/exports/share");
  data.emplace_back("/var/lib/snapd/desktop");
  ApplicationPlaces places;
  for (const fs::path& folder : data) {
    const fs::path applications = (folder / "applications").lexically_normal();
    const auto& known = places.applicationFolders;
    const bool isKnown = std::ranges::find(known, applications) != known.end();
    if (applications.is_absolute() && !isKnown) places.applicationFolders.push_back(applications);
  }
  const char* path = std::getenv("PATH");
  places.programFolders = absolutePaths(path == nullptr ? "" : path);
  if (places.programFolders.empty()) places.programFolders = {"/usr/local/bin", "/usr/bin", "/bin"};
  places.locale = environmentLocale("LC_MESSAGES");
  return places;
}

}  // namespace platform

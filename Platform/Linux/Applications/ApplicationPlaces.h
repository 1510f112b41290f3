#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace platform {

/// Where the installed applications are looked for, and in which language their names are read.
struct ApplicationPlaces {
  /// The folders with desktop files, the most important first.
  std::vector<std::filesystem::path> applicationFolders;
  /// Where a bare program name is looked for.
  std::vector<std::filesystem::path> programFolders;
  std::string locale;  ///< As the environment names it.

  /// The places of the user's environment. They include the folders of Flatpak and snap, even when
  /// the environment of a service lacks them.
  static ApplicationPlaces ofEnvironment();
};

}  // namespace platform

#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Platform/Linux/System/FileStamp.h"
#include "Tidewell/TextMap.h"

namespace platform {

/// The desktop files below a list of folders, by their ids. One thread at a time.
class DesktopFolders {
 public:
  /// `folders` hold the files, or sub-folders of them; the most important comes first. Those that
  /// do not exist may come to be later.
  explicit DesktopFolders(std::vector<std::filesystem::path> folders);

  /// Looks through the folders. The id of "kde/okular.desktop" is "kde-okular"; of several files
  /// with one id the first counts. What cannot be read is left out.
  void scan();

  /// Whether a folder has changed since the last scan, or has come or gone. Costs one look at each
  /// folder, not at the files.
  [[nodiscard]] bool hasChanged() const;

  [[nodiscard]] const tidewell::TextMap<std::filesystem::path>& fileById() const {
    return fileById_;
  }

 private:
  struct Seen {
    std::filesystem::path folder;
    FileStamp stamp;
    bool isSettled;  ///< Whether `stamp` was old enough then to tell a later change by.
  };

  void scan(const std::filesystem::path& folder, const std::string& prefix, int depth);

  std::vector<std::filesystem::path> folders_;
  std::vector<Seen> seen_;
  tidewell::TextMap<std::filesystem::path> fileById_;
};

}  // namespace platform

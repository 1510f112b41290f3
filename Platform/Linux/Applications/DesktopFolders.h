#pragma once

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Linux/Files/FileStamp.h"
#include "Tidewell/TextMap.h"

namespace platform {

/// Finds the desktop files below a list of folders, and knows them by their ids. One thread at a
/// time.
class DesktopFolders {
 public:
  /// `folders` hold the files, or sub-folders with files; the most important folder comes first.
  /// Folders that do not exist yet may appear later.
  explicit DesktopFolders(std::vector<std::filesystem::path> folders);

  /// Looks through the folders. The id of "kde/okular.desktop" is "kde-okular". When several files
  /// have one id, the first counts. Files that cannot be read are left out. Depth and number of
  /// folders and files are limited, far above those of real systems. A folder is walked only once,
  /// even if several links lead to it, and under its own name if that is below the folders too.
  void scan();

  /// Whether a folder has changed, come or gone since the last scan. Looks at each folder, but not
  /// at the files.
  [[nodiscard]] bool hasChanged() const;

  [[nodiscard]] const tidewell::TextMap<std::filesystem::path>& fileById() const {
    return fileById_;
  }
  /// How many folders the last scan walked.
  [[nodiscard]] std::size_t folderCount() const { return seen_.size(); }

 private:
  struct Seen {
    std::filesystem::path folder;
    FileStamp stamp;
    /// Whether `stamp` was old enough for any later change to give another stamp.
    bool isSettled;
  };

  /// The device and the inode, which identify a folder.
  using Identity = std::pair<dev_t, ino_t>;

  [[nodiscard]] static Identity identityOf(const std::filesystem::path& folder);
  void noteRealFolders(const std::filesystem::path& folder, int depth);
  void scan(const std::filesystem::path& folder, const std::string& prefix, int depth);
  bool isToBeWalked(const std::filesystem::directory_entry& entry) const;
  bool isFull() const;

  std::vector<std::filesystem::path> folders_;
  std::vector<Seen> seen_;
  std::set<Identity> roots_;   ///< The folders of the list.
  std::set<Identity> real_;    ///< The folders below them that are reached without a link.
  std::set<Identity> walked_;  ///< The folders that are walked already.
  std::size_t entries_ = 0;    ///< How many names were looked at.
  tidewell::TextMap<std::filesystem::path> fileById_;
};

}  // namespace platform

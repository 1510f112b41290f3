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

/// The desktop files below a list of folders, by their ids. One thread at a time.
class DesktopFolders {
 public:
  /// `folders` hold the files, or sub-folders of them; the most important comes first. Those that
  /// do not exist may come to be later.
  explicit DesktopFolders(std::vector<std::filesystem::path> folders);

  /// Looks through the folders. The id of "kde/okular.desktop" is "kde-okular"; of several files
  /// with one id the first counts. What cannot be read is left out, and so is what lies deeper or
  /// beyond more folders and files than any system has. A folder is walked once, by its own name
  /// rather than by a link's, however many links lead to it.
  void scan();

  /// Whether a folder has changed since the last scan, or has come or gone. Costs one look at each
  /// folder, not at the files.
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
    bool isSettled;  ///< Whether `stamp` was old enough then to tell a later change by.
  };

  /// Device and number, by which the system knows a folder.
  using Identity = std::pair<dev_t, ino_t>;

  [[nodiscard]] static Identity identityOf(const std::filesystem::path& folder);
  void noteRealFolders(const std::filesystem::path& folder, int depth);
  void scan(const std::filesystem::path& folder, const std::string& prefix, int depth);
  bool isToBeWalked(const std::filesystem::directory_entry& entry) const;
  bool isFull() const;

  std::vector<std::filesystem::path> folders_;
  std::vector<Seen> seen_;
  std::set<Identity> roots_;   ///< The listed ones.
  std::set<Identity> real_;    ///< Those below them that no link leads through.
  std::set<Identity> walked_;  ///< Those that are walked already.
  std::size_t entries_ = 0;    ///< How many names were looked at.
  tidewell::TextMap<std::filesystem::path> fileById_;
};

}  // namespace platform

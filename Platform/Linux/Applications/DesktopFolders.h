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
  /// `folders` hold the files, or sub-folders with files; the most important folder comes first.
  /// Folders that do not exist yet may appear later.
  explicit DesktopFolders(std::vector<std::filesystem::path> folders);

  /// Looks through the folders. The id of "kde/okular.desktop" is "kde-okular". Of several files
  /// with one id, the first counts. What cannot be read is left out. So is what lies deeper than on
  /// any real system, or beyond more folders and files than any has. A folder is walked once,
  /// however many links lead to it, and by its own name rather than by a link's.
  void scan();

  /// Whether a folder has changed, come or gone since the last scan. Looks at each folder once, and
  /// at no file.
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
    /// Whether `stamp` was old enough then that a later change gives another stamp.
    bool isSettled;
  };

  /// Device and number, by which the system identifies a folder.
  using Identity = std::pair<dev_t, ino_t>;

  [[nodiscard]] static Identity identityOf(const std::filesystem::path& folder);
  void noteRealFolders(const std::filesystem::path& folder, int depth);
  void scan(const std::filesystem::path& folder, const std::string& prefix, int depth);
  bool isToBeWalked(const std::filesystem::directory_entry& entry) const;
  bool isFull() const;

  std::vector<std::filesystem::path> folders_;
  std::vector<Seen> seen_;
  std::set<Identity> roots_;   ///< The folders of the list.
  std::set<Identity> real_;    ///< The folders below them to which no link leads.
  std::set<Identity> walked_;  ///< The folders that are walked already.
  std::size_t entries_ = 0;    ///< How many names were looked at.
  tidewell::TextMap<std::filesystem::path> fileById_;
};

}  // namespace platform

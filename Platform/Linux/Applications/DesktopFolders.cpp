#include "Platform/Linux/Applications/DesktopFolders.h"

#include <sys/stat.h>

#include <algorithm>
#include <string_view>
#include <system_error>
#include <utility>

namespace platform {
namespace {

namespace fs = std::filesystem;

/// Links between folders can make a circle.
constexpr int kDeepest = 8;
constexpr std::string_view kSuffix = ".desktop";

FileStamp stampOf(const fs::path& folder) {
  struct stat status {};
  return stat(folder.c_str(), &status) == 0 ? FileStamp::of(status) : FileStamp();
}

}  // namespace

DesktopFolders::DesktopFolders(std::vector<fs::path> folders) : folders_(std::move(folders)) {}

void DesktopFolders::scan() {
  seen_.clear();
  fileById_.clear();
  for (const fs::path& folder : folders_)
    scan(folder, "", 1);
}

void DesktopFolders::scan(const fs::path& folder, const std::string& prefix, int depth) {
  // Before the names are read, so that a change meanwhile is seen next time.
  const FileStamp stamp = stampOf(folder);
  seen_.push_back({folder, stamp, stamp.isSettled()});
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    std::error_code ignored;
    if (name.size() > kSuffix.size() && name.ends_with(kSuffix)) {
      const std::string stem = name.substr(0, name.size() - kSuffix.size());
      fileById_.try_emplace(prefix + stem, entry->path());
    } else if (depth < kDeepest && entry->is_directory(ignored)) {
      scan(entry->path(), prefix + name + "-", depth + 1);
    }
  }
}

bool DesktopFolders::hasChanged() const {
  return std::ranges::any_of(seen_, [](const Seen& seen) {
    return !seen.isSettled || stampOf(seen.folder) != seen.stamp;
  });
}

}  // namespace platform

#include "Platform/Linux/Applications/DesktopFolders.h"

#include <sys/stat.h>

#include <algorithm>
#include <string_view>
#include <system_error>
#include <utility>

#include "Tidewell/ForeignText.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr int kDeepest = 8;
constexpr std::size_t kMostFolders = 1000;
constexpr std::size_t kMostFiles = 20'000;
constexpr std::size_t kMostEntries = 100'000;
constexpr std::string_view kSuffix = ".desktop";

FileStamp stampOf(const fs::path& folder) {
  struct stat status {};
  return stat(folder.c_str(), &status) == 0 ? FileStamp::of(status) : FileStamp();
}

}  // namespace

DesktopFolders::DesktopFolders(std::vector<fs::path> folders) : folders_(std::move(folders)) {}

DesktopFolders::Identity DesktopFolders::identityOf(const fs::path& folder) {
  struct stat status {};
  if (stat(folder.c_str(), &status) != 0) return {};
  return {status.st_dev, status.st_ino};
}

void DesktopFolders::scan() {
  seen_.clear();
  fileById_.clear();
  roots_.clear();
  real_.clear();
  walked_.clear();
  entries_ = 0;
  for (const fs::path& folder : folders_) {
    roots_.insert(identityOf(folder));
    noteRealFolders(folder, 1);
  }
  entries_ = 0;
  for (const fs::path& folder : folders_)
    scan(folder, "", 1);
}

void DesktopFolders::noteRealFolders(const fs::path& folder, int depth) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end && !isFull();
       entry.increment(error)) {
    ++entries_;
    std::error_code ignored;
    if (entry->is_symlink(ignored) || !entry->is_directory(ignored)) continue;
    real_.insert(identityOf(entry->path()));
    if (depth + 1 < kDeepest) noteRealFolders(entry->path(), depth + 1);
  }
}

void DesktopFolders::scan(const fs::path& folder, const std::string& prefix, int depth) {
  // The stamp is taken before the names are read, so that `hasChanged` notices a change in between.
  const FileStamp stamp = stampOf(folder);
  const Identity identity = identityOf(folder);
  // A missing folder is watched as well.
  if (identity != Identity() && !walked_.insert(identity).second) return;
  seen_.push_back({folder, stamp, stamp.isSettled()});
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end && !isFull();
       entry.increment(error)) {
    ++entries_;
    const std::string name = entry->path().filename().string();
    if (name.size() > kSuffix.size() && name.ends_with(kSuffix)) {
      const std::string stem = name.substr(0, name.size() - kSuffix.size());
      fileById_.try_emplace(tidewell::cleaned(prefix + stem), entry->path());
    } else if (depth < kDeepest && isToBeWalked(*entry)) {
      scan(entry->path(), prefix + name + "-", depth + 1);
    }
  }
}

bool DesktopFolders::isToBeWalked(const fs::directory_entry& entry) const {
  std::error_code ignored;
  if (!entry.is_directory(ignored)) return false;
  const Identity identity = identityOf(entry.path());
  if (roots_.contains(identity)) return false;
  return !entry.is_symlink(ignored) || !real_.contains(identity);
}

bool DesktopFolders::isFull() const {
  return seen_.size() >= kMostFolders || fileById_.size() >= kMostFiles || entries_ >= kMostEntries;
}

bool DesktopFolders::hasChanged() const {
  return std::ranges::any_of(seen_, [](const Seen& seen) {
    return !seen.isSettled || stampOf(seen.folder) != seen.stamp;
  });
}

}  // namespace platform

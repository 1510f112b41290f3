#include "Platform/Linux/Settings/SettingsFile.h"

#include <sys/stat.h>

#include <system_error>
#include <utility>

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr int kLinksFollowed = 40;

/// The file at the end of a chain of symbolic links. The file need not exist.
fs::path resolved(fs::path path) {
  for (int link = 0; link < kLinksFollowed; ++link) {
    std::error_code error;
    const fs::path next = fs::read_symlink(path, error);
    if (error) return path;
    path = path.parent_path() / next;  // An absolute `next` replaces the path.
  }
  return path;
}

/// Makes folders that are accessible only to their owner, as the base directory rules want.
void makeFolder(const fs::path& folder) {
  std::error_code error;
  if (folder.empty() || fs::exists(folder, error)) return;
  makeFolder(folder.parent_path());
  mkdir(folder.c_str(), 0700);
}

}  // namespace

SettingsFile::SettingsFile(fs::path path) : path_(std::move(path)) {}

FileStamp SettingsFile::stamp() const {
  struct stat status {};
  return stat(path_.c_str(), &status) == 0 ? FileStamp::of(status) : FileStamp();
}

RegularFile SettingsFile::read() const {
  return readRegularFile(path_, kCapacity);
}

FolderLock SettingsFile::lock() const {
  const fs::path folder = resolved(path_).parent_path();
  makeFolder(folder);
  return FolderLock(folder);
}

SettingsFile::Change SettingsFile::replace(std::string_view text, const RegularFile& read,
                                           const FolderLock& lock) const {
  FileReplacement replacement(resolved(path_), text);
  if (!replacement.error().empty()) return {FileReplacement::Outcome::failed, replacement.error()};
  const FileReplacement::Outcome outcome = replacement.commitOver(read);
  if (outcome == FileReplacement::Outcome::done) lock.synchronize();
  return {outcome, replacement.error()};
}

}  // namespace platform

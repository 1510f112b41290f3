#include "Platform/Linux/Settings/SettingsFile.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "Platform/Linux/System/FileReplacement.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr int kLinksFollowed = 40;
constexpr int kNamesTried = 1000;

/// The file at the end of a chain of symbolic links. What a link names need not exist.
fs::path resolved(fs::path path) {
  for (int link = 0; link < kLinksFollowed; ++link) {
    std::error_code error;
    const fs::path next = fs::read_symlink(path, error);
    if (error) return path;
    path = path.parent_path() / next;  // An absolute `next` stands alone.
  }
  return path;
}

/// Makes folders as the base directory rules want them: their owner's alone.
void makeFolder(const fs::path& folder) {
  std::error_code error;
  if (folder.empty() || fs::exists(folder, error)) return;
  makeFolder(folder.parent_path());
  mkdir(folder.c_str(), 0700);
}

bool renameToFree(const fs::path& from, const fs::path& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // A file system that cannot do it at one stroke: a second name, then away with the first.
  return link(from.c_str(), to.c_str()) == 0 && unlink(from.c_str()) == 0;
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

SettingsFile::Change SettingsFile::replace(std::string_view text, const FolderLock& lock) const {
  const fs::path target = resolved(path_);
  FileReplacement replacement(target, text);
  if (!replacement.error().empty() || !replacement.commit()) return {target, replacement.error()};
  lock.synchronize();
  return {target, {}};
}

SettingsFile::Change SettingsFile::setAside(const FolderLock& lock) const {
  const fs::path target = resolved(path_);
  for (int number = 1; number <= kNamesTried; ++number) {
    fs::path free = target;
    free += number == 1 ? ".damaged" : ".damaged-" + std::to_string(number);
    if (renameToFree(target, free)) {
      lock.synchronize();
      return {std::move(free), {}};
    }
    if (errno != EEXIST) return {target, std::strerror(errno)};
  }
  return {target, "there are too many such files already"};
}

}  // namespace platform

#include "Platform/Posix/Files/OwnFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace platform {
namespace {

bool makeFolder(const std::filesystem::path& path) {
  return mkdir(path.c_str(), S_IRWXU) == 0 || errno == EEXIST;
}

/// Makes the missing folders down to `path`.
bool makeFolders(const std::filesystem::path& path) {
  if (makeFolder(path)) return true;
  if (errno != ENOENT || !path.has_parent_path() || path.parent_path() == path) return false;
  return makeFolders(path.parent_path()) && makeFolder(path);
}

}  // namespace

OwnFolder OwnFolder::open(const std::filesystem::path& path, ErrorDescription describe) {
  Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!folder) return {{}, describe(errno)};
  if (isOwn(folder.get())) return {std::move(folder), ""};
  return {{}, "the folder belongs to another user, or others may write to it"};
}

OwnFolder OwnFolder::make(const std::filesystem::path& path, ErrorDescription describe) {
  if (!makeFolder(path)) return {{}, describe(errno)};
  return open(path, describe);
}

OwnFolder OwnFolder::makeAll(const std::filesystem::path& path, ErrorDescription describe) {
  if (path.empty()) return {{}, "there is no folder for it"};
  if (!makeFolders(path)) return {{}, describe(errno)};
  return open(path, describe);
}

bool isOwn(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && status.st_uid == geteuid() &&
         (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

}  // namespace platform

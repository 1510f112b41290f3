#include "Platform/Posix/Files/OwnFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "Platform/Posix/ErrorDescription.h"
#include "Platform/Posix/Files/Descriptor.h"
#include "Platform/Posix/Files/WholeWrite.h"

namespace platform {
namespace {

std::string lastError() {
  return describeError(errno);
}

/// Why a new file must not take the place of what is at `path`.
std::string whyNotReplaced(const std::filesystem::path& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return errno == ENOENT ? "" : lastError();
  if (S_ISREG(status.st_mode)) return "";
  if (S_ISLNK(status.st_mode)) return "there is a symbolic link in its place";
  if (S_ISDIR(status.st_mode)) return "there is a folder in its place";
  return "there is something else than a file in its place";
}

}  // namespace

std::string writeOwnFile(const std::filesystem::path& path, std::string_view content) {
  if (std::string why = whyNotReplaced(path); !why.empty()) return why;
  // The mode of a file with such a name is 0600. The name is short, so that it is allowed wherever
  // that of `path` is.
  std::string temporary = (path.parent_path() / ".staylit-XXXXXX").string();
  const Descriptor file(mkostemp(temporary.data(), O_CLOEXEC));
  if (!file) return lastError();
  if (writeWhole(file.get(), content) && fsync(file.get()) == 0 &&
      rename(temporary.c_str(), path.c_str()) == 0)
    return "";
  std::string why = lastError();
  unlink(temporary.c_str());
  return why;
}

}  // namespace platform

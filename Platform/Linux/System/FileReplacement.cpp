#include "Platform/Linux/System/FileReplacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "Platform/Linux/System/Descriptor.h"

namespace platform {
namespace {

constexpr mode_t kPermissions = 07777;

bool writeAll(int file, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = write(file, content.data(), content.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

bool copyOwnerAndMode(int file, const std::filesystem::path& target) {
  struct stat status {};
  if (stat(target.c_str(), &status) != 0) return errno == ENOENT;
  // Matters only to an administrator who runs the program on somebody else's file.
  if (status.st_uid != geteuid() || status.st_gid != getegid()) {
    if (fchown(file, status.st_uid, status.st_gid) != 0 && errno != EPERM) return false;
  }
  return fchmod(file, status.st_mode & kPermissions) == 0;
}

}  // namespace

FileReplacement::FileReplacement(const std::filesystem::path& target, std::string_view content)
    : target_(target) {
  const std::string name = "." + target.filename().string() + ".XXXXXX";
  std::string path = (target.parent_path() / name).string();
  const Descriptor file(mkostemp(path.data(), O_CLOEXEC));
  if (!file) {
    error_ = std::strerror(errno);
    return;
  }
  temporary_ = std::move(path);
  const bool isWritten = copyOwnerAndMode(file.get(), target) && writeAll(file.get(), content) &&
                         fsync(file.get()) == 0;
  if (!isWritten) error_ = std::strerror(errno);
}

FileReplacement::~FileReplacement() {
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

bool FileReplacement::commit() {
  if (rename(temporary_.c_str(), target_.c_str()) != 0) {
    error_ = std::strerror(errno);
    return false;
  }
  temporary_.clear();
  return true;
}

}  // namespace platform

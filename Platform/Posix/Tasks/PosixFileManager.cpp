#include "Platform/Posix/Tasks/PosixFileManager.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string_view>
#include <system_error>

#include "Platform/Posix/Files/Descriptor.h"
#include "Platform/Posix/Files/WholeWrite.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kPermissions = 07777;
/// Names may be taken by files that earlier processes with this process's number left behind. So
/// many are not expected.
constexpr int kMostNames = 100;

/// The mode of a file that exists.
std::optional<mode_t> modeOf(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  const mode_t permissions = status.st_mode & kPermissions;
  return permissions;
}

/// A new file beside the file that it is to replace. The destructor removes it if it did not
/// replace the other. A function that fails returns false and sets `errno`.
class Replacement {
 public:
  explicit Replacement(const std::string& target) : target_(target) {}
  ~Replacement() {
    if (file_) unlink(path_.c_str());
  }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

  bool create() {
    const auto former = modeOf(target_);
    // While the new file is empty, nobody can open it who could not read the former one.
    return open(former.value_or(0666)) && (!former || fchmod(file_.get(), *former) == 0);
  }

  bool write(std::string_view text) {
    return writeWhole(file_.get(), text) && fsync(file_.get()) == 0;
  }

  bool takePlace() {
    if (std::rename(path_.c_str(), target_.c_str()) != 0) return false;
    file_.reset();
    return true;
  }

 private:
  bool open(mode_t mode) {
    for (int number = 0; number < kMostNames; ++number) {
      path_ = name(number);
      file_ = Descriptor(::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
      if (file_ || errno != EEXIST) break;
    }
    return static_cast<bool>(file_);
  }

  /// The name is hidden, so that nobody takes the file for a finished one.
  [[nodiscard]] std::string name(int number) const {
    const fs::path target(target_);
    const std::string ending = "." + std::to_string(getpid()) + "." + std::to_string(number);
    return (target.parent_path() / ("." + target.filename().string() + ending)).string();
  }

  const std::string& target_;
  std::string path_;
  Descriptor file_;  ///< Empty while there is no new file.
};

}  // namespace

PosixFileManager::PosixFileManager(const std::filesystem::path& home, ErrorDescription describe)
    : home_(home.string()), describe_(describe) {
  while (home_.ends_with('/'))
    home_.pop_back();
}

std::optional<std::string> PosixFileManager::createDirectory(const std::string& path) {
  std::error_code error;
  fs::create_directories(path, error);
  if (error) return describe_(error.value());
  return std::nullopt;
}

std::optional<std::string> PosixFileManager::writeAtomically(const std::string& path,
                                                             const std::string& text) {
  Replacement replacement(path);
  if (replacement.create() && replacement.write(text) && replacement.takePlace())
    return std::nullopt;
  return describe_(errno);
}

bool PosixFileManager::exists(const std::string& path) {
  std::error_code error;
  return fs::exists(path, error);
}

bool PosixFileManager::remove(const std::string& path) {
  std::error_code error;
  return fs::remove(path, error);
}

}  // namespace platform

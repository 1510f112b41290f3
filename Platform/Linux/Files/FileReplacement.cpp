#include "Platform/Linux/Files/FileReplacement.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "Platform/Linux/Files/ReadLease.h"
#include "Platform/Posix/Files/Descriptor.h"
#include "Platform/Posix/Files/WholeWrite.h"

namespace platform {
namespace {

constexpr mode_t kPermissions = 07777;
/// Tells `fchown` to leave the owner, or the group, as it is.
constexpr uid_t kSame = static_cast<uid_t>(-1);

/// Gives the file the owner, the group and the mode of `target`, as far as this user may. Only root
/// may give a file to another owner, and a user may give it only to the user's own groups. When the
/// group cannot be kept, the file's group gets no more rights than everybody has.
bool copyOwnerAndMode(int file, const std::filesystem::path& target) {
  struct stat status {};
  if (stat(target.c_str(), &status) != 0) return errno == ENOENT;
  struct stat own {};
  if (fstat(file, &own) != 0) return false;
  mode_t mode = status.st_mode & kPermissions;
  // Some file systems refuse every change, even one to the present owner or group.
  if (own.st_uid != status.st_uid && fchown(file, status.st_uid, kSame) != 0 && errno != EPERM) {
    return false;
  }
  if (own.st_gid != status.st_gid && fchown(file, kSame, status.st_gid) != 0) {
    if (errno != EPERM) return false;
    mode = (mode & ~mode_t{S_IRWXG}) | ((mode & S_IRWXO) << 3U);
  }
  return fchmod(file, mode) == 0;
}

FileStamp stampOf(int file) {
  struct stat status {};
  return fstat(file, &status) == 0 ? FileStamp::of(status) : FileStamp();
}

FileStamp stampOf(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 ? FileStamp::of(status) : FileStamp();
}

bool exchangeNames(const std::string& one, const std::filesystem::path& other) {
  return renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE) == 0;
}

bool isStill(const std::filesystem::path& path, const RegularFile& expected) {
  const RegularFile now = readRegularFile(path, expected.text.size());
  return now.error.empty() && now.exists && now.text == expected.text;
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
  const bool isWritten = copyOwnerAndMode(file.get(), target) && writeWhole(file.get(), content) &&
                         fsync(file.get()) == 0;
  if (!isWritten) error_ = std::strerror(errno);
  own_ = stampOf(file.get());
}

FileReplacement::~FileReplacement() {
  // After an exchange that could not be undone, this name belongs to the file that others wrote.
  if (!temporary_.empty() && stampOf(temporary_) == own_) unlink(temporary_.c_str());
}

bool FileReplacement::commit() {
  if (rename(temporary_.c_str(), target_.c_str()) != 0) {
    error_ = std::strerror(errno);
    return false;
  }
  temporary_.clear();
  return true;
}

FileReplacement::Outcome FileReplacement::failure() {
  error_ = std::strerror(errno);
  return Outcome::failed;
}

FileReplacement::Outcome FileReplacement::commitOver(const RegularFile& expected) {
  if (!expected.exists) return commitAsNew();
  const ReadLease lease(target_);
  // A file server may refuse every lease, even on a file that nobody else has open. Then a refusal
  // does not tell of a writer.
  if (lease.isRefused() && !ReadLease(temporary_).isRefused()) return Outcome::busy;
  if (!isStill(target_, expected)) return Outcome::changed;
  const Outcome outcome = exchange(expected);
  if (outcome != Outcome::done || lease.isWanted()) {
    return outcome == Outcome::done ? putBack() : outcome;
  }
  if (!temporary_.empty()) unlink(temporary_.c_str());
  temporary_.clear();
  return Outcome::done;
}

FileReplacement::Outcome FileReplacement::commitAsNew() {
  if (renameat2(AT_FDCWD, temporary_.c_str(), AT_FDCWD, target_.c_str(), RENAME_NOREPLACE) == 0) {
    temporary_.clear();
    return Outcome::done;
  }
  if (errno == EEXIST) return Outcome::changed;
  if (errno != EINVAL && errno != ENOSYS) return failure();
  // This file system cannot rename without replacing. So the file gets a second name, and loses the
  // first one later.
  if (link(temporary_.c_str(), target_.c_str()) == 0) return Outcome::done;
  if (errno == EEXIST) return Outcome::changed;
  if (errno != EPERM) return failure();
  return commit() ? Outcome::done : Outcome::failed;
}

FileReplacement::Outcome FileReplacement::exchange(const RegularFile& expected) {
  if (!exchangeNames(temporary_, target_)) {
    if (errno == ENOENT) return Outcome::changed;
    if (errno != EINVAL && errno != ENOSYS) return failure();
    // This file system cannot exchange two files. The target was checked a moment ago.
    return commit() ? Outcome::done : Outcome::failed;
  }
  return isStill(temporary_, expected) ? Outcome::done : putBack();
}

/// Undoes an exchange. The temporary name belongs to the old target, with everything that others
/// wrote into it until the last moment.
FileReplacement::Outcome FileReplacement::putBack() {
  if (temporary_.empty()) return Outcome::done;  // There was no exchange.
  if (!exchangeNames(temporary_, target_)) {
    // Another program has removed the new file from the target's place.
    if (errno != ENOENT || rename(temporary_.c_str(), target_.c_str()) != 0) return notPutBack();
    temporary_.clear();
    return Outcome::changed;
  }
  if (stampOf(temporary_) == own_) return Outcome::changed;
  // Another program has put a file there since the exchange. That file is the newest one.
  if (rename(temporary_.c_str(), target_.c_str()) != 0) return notPutBack();
  temporary_.clear();
  return Outcome::changed;
}

FileReplacement::Outcome FileReplacement::notPutBack() {
  failure();
  error_ += "; what others wrote is kept as " + temporary_;
  return Outcome::failed;
}

}  // namespace platform

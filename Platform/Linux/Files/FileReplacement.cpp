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
  // This matters only to an administrator who runs the program on somebody else's file.
  if (status.st_uid != geteuid() || status.st_gid != getegid()) {
    if (fchown(file, status.st_uid, status.st_gid) != 0 && errno != EPERM) return false;
  }
  return fchmod(file, status.st_mode & kPermissions) == 0;
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
  const bool isWritten = copyOwnerAndMode(file.get(), target) && writeAll(file.get(), content) &&
                         fsync(file.get()) == 0;
  if (!isWritten) error_ = std::strerror(errno);
  own_ = stampOf(file.get());
}

FileReplacement::~FileReplacement() {
  // After an exchange that could not be undone, the name is that of what others wrote.
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
  // A server may grant no lease at all, even on a file that nobody else has open. Its refusal is
  // then no sign of a writer.
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
  // The file system cannot do it in one step, so the file gets a second name and then loses the
  // first.
  if (link(temporary_.c_str(), target_.c_str()) == 0) return Outcome::done;
  if (errno == EEXIST) return Outcome::changed;
  if (errno != EPERM) return failure();
  return commit() ? Outcome::done : Outcome::failed;
}

FileReplacement::Outcome FileReplacement::exchange(const RegularFile& expected) {
  if (!exchangeNames(temporary_, target_)) {
    if (errno == ENOENT) return Outcome::changed;
    if (errno != EINVAL && errno != ENOSYS) return failure();
    // The file system cannot exchange two files. The target was checked just before.
    return commit() ? Outcome::done : Outcome::failed;
  }
  return isStill(temporary_, expected) ? Outcome::done : putBack();
}

/// The temporary name now holds the old target, with everything that others wrote into it in the
/// last moment.
FileReplacement::Outcome FileReplacement::putBack() {
  if (temporary_.empty()) return Outcome::done;  // There was no exchange.
  if (!exchangeNames(temporary_, target_)) {
    // Somebody has removed the file that stood there for a moment.
    if (errno != ENOENT || rename(temporary_.c_str(), target_.c_str()) != 0) return notPutBack();
    temporary_.clear();
    return Outcome::changed;
  }
  if (stampOf(temporary_) == own_) return Outcome::changed;
  // Somebody has put a file there in that moment. That file is the newest.
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

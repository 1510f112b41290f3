#include "Staylit/Desktop/Session/UserLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>

#include "Tidewell/TextReading.h"

namespace staylit {
namespace {

constexpr const char* kLockFile = "staylit.lock";

std::filesystem::path runtimeFolder() {
  const char* folder = std::getenv("XDG_RUNTIME_DIR");
  if (folder && *folder == '/') return folder;
  // What cron and sudo start has no such variable, and the same user may have a session.
  return "/run/user/" + std::to_string(::geteuid());
}

/// Whether only this user can have put something there.
bool isOfThisUserAlone(int descriptor, mode_t kind) {
  struct stat status {};
  constexpr mode_t kOthers = S_IRWXG | S_IRWXO;
  return ::fstat(descriptor, &status) == 0 && (status.st_mode & S_IFMT) == kind &&
         status.st_uid == ::geteuid() && (status.st_mode & kOthers) == 0;
}

/// A folder whose file system has no locks keeps nobody from starting.
UserLock::Outcome outcomeOfFailure(int error) {
  return error == EWOULDBLOCK ? UserLock::Outcome::held : UserLock::Outcome::noFolder;
}

void writeOwnIdentifier(int file) {
  const std::string text = std::to_string(::getpid()) + "\n";
  // The number is only for people to read: the lock counts without it.
  if (::ftruncate(file, 0) != 0) return;
  [[maybe_unused]] const ssize_t written = ::pwrite(file, text.data(), text.size(), 0);
}

pid_t writtenIdentifier(int file) {
  std::array<char, 16> text{};
  const ssize_t size = ::pread(file, text.data(), text.size(), 0);
  if (size <= 0) return 0;
  const std::string_view line(text.data(), static_cast<std::size_t>(size));
  return tidewell::wholeNumber<pid_t>(tidewell::trimmed(line, "\n")).value_or(0);
}

}  // namespace

UserLock::UserLock() : UserLock(runtimeFolder()) {}

platform::Descriptor UserLock::openFolder() const {
  platform::Descriptor folder(::open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder && !isOfThisUserAlone(folder.get(), S_IFDIR)) folder.reset();
  return folder;
}

bool UserLock::hasFolder() const {
  return static_cast<bool>(openFolder());
}

UserLock::Outcome UserLock::take() {
  if (file_) return Outcome::taken;
  const platform::Descriptor folder = openFolder();
  if (!folder) return Outcome::noFolder;
  platform::Descriptor file(::openat(folder.get(), kLockFile,
                                     O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                                     S_IRUSR | S_IWUSR));
  if (!file || !isOfThisUserAlone(file.get(), S_IFREG)) return Outcome::noFolder;
  if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) return outcomeOfFailure(errno);
  writeOwnIdentifier(file.get());
  file_ = std::move(file);
  return Outcome::taken;
}

std::optional<pid_t> UserLock::holder() const {
  const platform::Descriptor folder = openFolder();
  if (!folder) return std::nullopt;
  const platform::Descriptor file(
      ::openat(folder.get(), kLockFile, O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  if (!file || !isOfThisUserAlone(file.get(), S_IFREG)) return std::nullopt;
  // Whoever gets the lock gives it back as the descriptor is closed.
  if (::flock(file.get(), LOCK_SH | LOCK_NB) == 0 || outcomeOfFailure(errno) != Outcome::held) {
    return std::nullopt;
  }
  return writtenIdentifier(file.get());
}

std::string outOfReach(pid_t holder, bool hasBus) {
  const std::string process = std::to_string(holder);
  return (holder > 0 ? "one runs as process " + process : "one runs") + ", but " +
         (hasBus ? "not on this session bus" : "there is no session bus here on which to ask it") +
         (holder > 0 ? "; kill " + process + " ends it in order" : "");
}

}  // namespace staylit

#include "Platform/Posix/Files/LineFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <utility>

#include "Platform/Posix/Files/OwnFolder.h"
#include "Tidewell/TextReading.h"

namespace platform {

namespace fs = std::filesystem;
using std::chrono::sys_days;

namespace {

constexpr mode_t kFileMode = 0600;
constexpr std::string_view kNameEnd = ".jsonl";
/// More than the program ever writes: somebody else did.
constexpr std::size_t kMostFilesRead = 64;
constexpr std::size_t kMostBytesRead = std::size_t{1} << 20;

std::chrono::sys_seconds systemNow() {
  return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

bool isOurFile(int file) {
  struct stat status {};
  return fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink <= 1 &&
         isOwn(file);
}

tidewell::WallTime modificationTime(const struct stat& status) {
#ifdef __APPLE__
  const timespec& time = status.st_mtimespec;
#else
  const timespec& time = status.st_mtim;
#endif
  return tidewell::WallTime(std::chrono::seconds(time.tv_sec) +
                            std::chrono::nanoseconds(time.tv_nsec));
}

/// "20261122" as a day.
std::optional<sys_days> dayIn(std::string_view digits) {
  const auto number = tidewell::wholeNumber<unsigned>(digits);
  if (!number) return std::nullopt;
  const auto date = std::chrono::year(static_cast<int>(*number / 10'000)) /
                    static_cast<int>(*number / 100 % 100) / static_cast<int>(*number % 100);
  return date.ok() ? std::optional(sys_days(date)) : std::nullopt;
}

std::string fileName(unsigned long number, sys_days begun) {
  const std::chrono::year_month_day date(begun);
  std::array<char, 64> name{};
  std::snprintf(name.data(), name.size(), "%08lu-%04d%02u%02u", number, int{date.year()},
                unsigned{date.month()}, unsigned{date.day()});
  return name.data() + std::string(kNameEnd);
}

std::string readAll(int file) {
  std::string text;
  std::array<char, 16'384> buffer{};
  while (text.size() < kMostBytesRead) {
    const ssize_t length = ::read(file, buffer.data(), buffer.size());
    if (length < 0 && errno == EINTR) continue;
    if (length <= 0) break;
    text.append(buffer.data(), static_cast<std::size_t>(length));
  }
  return text;
}

/// A process that appends has a shared lock on its folder as long as it lives.
bool isLockedByAnother(int folder) {
  if (flock(folder, LOCK_EX | LOCK_NB) != 0) return errno == EWOULDBLOCK;
  flock(folder, LOCK_UN);
  return false;
}

}  // namespace

LineFiles::LineFiles(fs::path folder, ErrorDescription describe)
    : LineFiles(std::move(folder), describe, Limits(), systemNow) {}

LineFiles::LineFiles(fs::path folder, ErrorDescription describe, Limits limits, Now now)
    : path_(std::move(folder)), describe_(describe), limits_(limits), now_(now) {}

std::optional<std::string> LineFiles::append(std::string_view line) {
  if (auto why = prepare(line.size() + 2)) return why;
  std::string text;
  char last = '\n';
  struct stat status {};
  const bool hasText = fstat(file_.get(), &status) == 0 && status.st_size > 0;
  if (hasText) static_cast<void>(pread(file_.get(), &last, 1, status.st_size - 1) == 1);
  if (last != '\n') text = '\n';  // A line is torn that was written before.
  text.append(line) += '\n';
  const ssize_t written = write(file_.get(), text.data(), text.size());
  if (written < 0) return failure(errno);
  if (static_cast<std::size_t>(written) < text.size()) return failure(ENOSPC);
  return std::nullopt;
}

void LineFiles::refresh() {
  if (file_) futimens(file_.get(), nullptr);
}

void LineFiles::close() {
  file_.reset();
  folder_.reset();
  isLocked_ = false;
}

std::optional<tidewell::WallTime> LineFiles::lastWritten() {
  if (prepareFolder()) return std::nullopt;
  return writtenAt(folder_.get(), list(folder_.get()));
}

LineFiles::Content LineFiles::read(const fs::path& folder, ErrorDescription describe) {
  Content content;
  struct stat status {};
  if (lstat(folder.c_str(), &status) != 0 && errno == ENOENT) return content;
  OwnFolder opened = OwnFolder::open(folder, describe);
  content.error = std::move(opened.error);
  if (!opened.descriptor) return content;
  const int descriptor = opened.descriptor.get();
  content.isInUse = isLockedByAnother(descriptor);
  Files files = list(descriptor);
  content.lastWritten = writtenAt(descriptor, files);
  const std::size_t surplus = files.size() > kMostFilesRead ? files.size() - kMostFilesRead : 0;
  files.erase(files.begin(), files.begin() + static_cast<std::ptrdiff_t>(surplus));
  for (const File& file : files) {
    const Descriptor reading(
        openat(descriptor, file.name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!reading || !isOurFile(reading.get())) continue;
    content.text += readAll(reading.get());
    if (!content.text.empty() && content.text.back() != '\n') content.text += '\n';
  }
  return content;
}

std::optional<LineFiles::File> LineFiles::fileNamed(std::string_view name) {
  constexpr std::size_t kLengthOfDay = 8;
  const std::string whole(name);
  if (!name.ends_with(kNameEnd)) return std::nullopt;
  name.remove_suffix(kNameEnd.size());
  const auto number = tidewell::takeWholeNumber<unsigned long>(name);
  if (!number || name.size() != kLengthOfDay + 1 || name.front() != '-') return std::nullopt;
  const auto begun = dayIn(name.substr(1));
  return begun ? std::optional(File{*number, *begun, whole}) : std::nullopt;
}

LineFiles::Files LineFiles::list(int folder) {
  Files files;
  const int copy = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(copy >= 0 ? fdopendir(copy) : nullptr,
                                                    closedir);
  if (!entries) {
    const Descriptor unused(copy);
    return files;
  }
  while (const dirent* entry = readdir(entries.get())) {
    if (auto file = fileNamed(entry->d_name)) files.push_back(*std::move(file));
  }
  std::ranges::sort(files, {}, &File::number);
  return files;
}

std::optional<tidewell::WallTime> LineFiles::writtenAt(int folder, const Files& files) {
  struct stat status {};
  if (files.empty() ||
      fstatat(folder, files.back().name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return std::nullopt;
  }
  return modificationTime(status);
}

std::optional<std::string> LineFiles::prepare(std::size_t bytes) {
  if (file_ && hasRoom(bytes)) {
    struct stat status {};
    const bool isThere = fstat(file_.get(), &status) == 0 && status.st_nlink > 0;
    if (isThere && isLocked_) return std::nullopt;
    // Somebody deleted the file, and the folder with it perhaps.
    if (!isThere) folder_.reset();
  }
  file_.reset();
  if (auto why = prepareFolder()) return why;
  return openFile(bytes);
}

std::optional<std::string> LineFiles::prepareFolder() {
  if (!folder_) {
    isLocked_ = false;
    OwnFolder made = OwnFolder::makeAll(path_, describe_);
    if (!made) return std::move(made.error);
    folder_ = std::move(made.descriptor);
  }
  // While somebody reads, the lock is not to be had. Then it is taken with a later line.
  if (!isLocked_) {
    isLocked_ = flock(folder_.get(), LOCK_SH | LOCK_NB) == 0 || errno != EWOULDBLOCK;
  }
  return std::nullopt;
}

std::optional<std::string> LineFiles::openFile(std::size_t bytes) {
  const Files files = list(folder_.get());
  if (files.empty()) return beginFile(files);
  auto why = open(files.back(), 0);
  if (!why && hasRoom(bytes)) return std::nullopt;
  return beginFile(files);
}

std::optional<std::string> LineFiles::beginFile(const Files& files) {
  const File next{files.empty() ? 1 : files.back().number + 1,
                  std::chrono::floor<std::chrono::days>(now_()), ""};
  File named = next;
  named.name = fileName(next.number, next.begun);
  // Another program may begin the same file.
  if (auto why = open(named, O_CREAT)) return why;
  removeOldFiles(files);
  return std::nullopt;
}

std::optional<std::string> LineFiles::open(const File& file, int flags) {
  file_ = Descriptor(openat(folder_.get(), file.name.c_str(),
                            O_RDWR | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | flags,
                            kFileMode));
  if (!file_) return failure(errno);
  begun_ = file.begun;
  if (isOurFile(file_.get())) return std::nullopt;
  file_.reset();
  return "the file " + file.name + " is not the program's own";
}

void LineFiles::removeOldFiles(Files files) const {
  const auto remove = [this](const File& file) { unlinkat(folder_.get(), file.name.c_str(), 0); };
  const auto today = std::chrono::floor<std::chrono::days>(now_());
  // Where even the newest seems to be old, the clock may be wrong.
  const bool isClockRight = !files.empty() && today - files.back().begun < limits_.age;
  if (isClockRight) {
    std::erase_if(files, [&](const File& file) {
      const bool isOld = today - file.begun >= limits_.age;
      if (isOld) remove(file);
      return isOld;
    });
  }
  // With the one that was just begun.
  for (std::size_t index = 0; index < files.size() && files.size() - index >= limits_.files;
       ++index)
    remove(files[index]);
}

bool LineFiles::hasRoom(std::size_t bytes) const {
  struct stat status {};
  if (fstat(file_.get(), &status) != 0) return false;
  const bool isOld = std::chrono::floor<std::chrono::days>(now_()) - begun_ >= limits_.fileAge;
  const bool isEmpty = status.st_size == 0;
  return isEmpty ||
         (!isOld && static_cast<std::size_t>(status.st_size) + bytes <= limits_.fileBytes);
}

std::string LineFiles::failure(int errorNumber) const {
  return describe_(errorNumber);
}

}  // namespace platform

#include "Platform/Linux/Files/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {
namespace {

RegularFile failure(std::string error) {
  RegularFile file;
  file.error = std::move(error);
  return file;
}

/// The failure that `errno` tells, or no failure when the file is missing.
RegularFile failureOfCall() {
  return errno == ENOENT ? RegularFile() : failure(std::strerror(errno));
}

/// Reads until the end, or until there are more than `capacity` bytes. Absent when reading fails.
std::optional<std::string> readUpTo(int file, std::size_t capacity) {
  std::string text;
  char buffer[8192];
  while (text.size() <= capacity) {
    const ssize_t count = read(file, buffer, sizeof buffer);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    text.append(buffer, static_cast<std::size_t>(count));
  }
  return text;
}

}  // namespace

RegularFile readRegularFile(const std::filesystem::path& path, std::size_t capacity) {
  struct stat status {};
  // A device is not opened, because opening alone may have an effect.
  if (stat(path.c_str(), &status) != 0) return failureOfCall();
  if (S_ISDIR(status.st_mode)) return failure("it is a folder");
  if (!S_ISREG(status.st_mode)) return failure("it is not a regular file");
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file || fstat(file.get(), &status) != 0) return failureOfCall();
  if (!S_ISREG(status.st_mode)) return failure("it is not a regular file");
  if (static_cast<std::size_t>(status.st_size) > capacity) return failure("it is too large");
  std::optional<std::string> text = readUpTo(file.get(), capacity);
  if (!text) return failure(std::strerror(errno));
  if (text->size() > capacity) return failure("it is too large");
  return {true, std::move(*text), FileStamp::of(status), {}};
}

}  // namespace platform

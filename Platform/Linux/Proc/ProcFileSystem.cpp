#include "Platform/Linux/Proc/ProcFileSystem.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>

#include "Tidewell/TextReading.h"

namespace platform {
namespace {

struct DirectoryCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};

std::optional<std::int32_t> parsePid(std::string_view text) {
  const auto pid = tidewell::wholeNumber<std::int32_t>(text);
  return pid && *pid >= 1 ? pid : std::nullopt;
}

}  // namespace

ProcFileSystem::ProcFileSystem(const std::string& root)
    : root_(::open(root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {}

std::optional<std::vector<std::int32_t>> ProcFileSystem::pids() {
  const int folder = openat(root_.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return std::nullopt;
  const std::unique_ptr<DIR, DirectoryCloser> directory(fdopendir(folder));
  if (!directory) {
    ::close(folder);
    return std::nullopt;
  }
  std::vector<std::int32_t> pids;
  while (const dirent* entry = readdir(directory.get())) {
    if (const auto pid = parsePid(entry->d_name)) pids.push_back(*pid);
  }
  std::ranges::sort(pids);
  return pids;
}

std::optional<std::int32_t> ProcFileSystem::newestPid() {
  const Descriptor file(openat(root_.get(), "loadavg", O_RDONLY | O_CLOEXEC));
  const auto text = read(file);
  if (!text) return std::nullopt;
  const std::string_view line = tidewell::trimmed(*text, "\n");
  return parsePid(line.substr(line.rfind(' ') + 1));
}

std::optional<std::string_view> ProcFileSystem::read(std::int32_t pid, const char* name) {
  return read(open(pid, name));
}

std::optional<std::string_view> ProcFileSystem::read(const Descriptor& file) {
  if (!file) return std::nullopt;
  ssize_t size = 0;
  do {
    size = pread(file.get(), buffer_, kFileCapacity, 0);
  } while (size < 0 && errno == EINTR);
  if (size < 0) return std::nullopt;
  return std::string_view(buffer_, static_cast<std::size_t>(size));
}

Descriptor ProcFileSystem::open(std::int32_t pid, const char* name) {
  return Descriptor(openat(root_.get(), path(pid, name), O_RDONLY | O_CLOEXEC));
}

std::optional<std::string_view> ProcFileSystem::readLink(std::int32_t pid, const char* name) {
  const ssize_t size = readlinkat(root_.get(), path(pid, name), buffer_, kFileCapacity);
  if (size < 0) return std::nullopt;
  return std::string_view(buffer_, static_cast<std::size_t>(size));
}

const char* ProcFileSystem::path(std::int32_t pid, const char* name) {
  std::snprintf(path_, sizeof path_, "%d/%s", pid, name);
  return path_;
}

}  // namespace platform

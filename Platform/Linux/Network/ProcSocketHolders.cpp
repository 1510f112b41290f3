#include "Platform/Linux/Network/ProcSocketHolders.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <functional>
#include <string_view>

#include "Platform/Linux/Proc/ProcStat.h"
#include "Tidewell/TextReading.h"

namespace platform {
namespace {

constexpr std::size_t kEntriesBufferBytes = std::size_t{4} << 10;

std::string pathOf(std::int32_t pid, std::string_view leaf) {
  return std::to_string(pid).append(leaf);
}

/// The number in a link of the form "socket:[123]".
std::optional<std::uint32_t> socketInode(std::string_view link) {
  constexpr std::string_view kPrefix = "socket:[";
  if (!link.starts_with(kPrefix) || !link.ends_with(']')) return std::nullopt;
  link.remove_prefix(kPrefix.size());
  link.remove_suffix(1);
  return tidewell::wholeNumber<std::uint32_t>(link);
}

std::optional<std::uint32_t> socketInodeOf(int directory, std::int32_t descriptor) {
  std::array<char, 12> name{};
  std::to_chars(name.data(), name.data() + name.size() - 1, descriptor);
  std::array<char, 32> link{};
  const ssize_t length = readlinkat(directory, name.data(), link.data(), link.size());
  if (length <= 0) return std::nullopt;
  return socketInode({link.data(), static_cast<std::size_t>(length)});
}

/// Calls `visit` with each entry of a directory whose name is a whole number of 32 bits, until
/// `visit` returns false. Begins at the directory's read position. False when `visit` stopped it,
/// or when the directory cannot be read to its end.
bool visitNumberedEntries(int directory, const std::function<bool(std::int32_t number)>& visit) {
  // `readdir` would take 32 KiB from the heap for each directory.
  std::array<std::byte, kEntriesBufferBytes> buffer;
  for (;;) {
    const ssize_t count = getdents64(directory, buffer.data(), buffer.size());
    if (count <= 0) return count == 0;
    for (std::size_t offset = 0; offset < static_cast<std::size_t>(count);) {
      decltype(dirent64::d_reclen) length = 0;
      std::memcpy(&length, &buffer[offset + offsetof(dirent64, d_reclen)], sizeof length);
      const char* name =
          reinterpret_cast<const char*>(&buffer[offset + offsetof(dirent64, d_name)]);
      const auto number = tidewell::wholeNumber<std::int32_t>(name);
      if (number && *number >= 0 && !visit(*number)) return false;
      offset += length;
    }
  }
}

}  // namespace

ProcSocketHolders::ProcSocketHolders(const std::string& root)
    : root_(open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}

void ProcSocketHolders::listPids(std::vector<std::int32_t>& pids) {
  pids.clear();
  lseek(root_.get(), 0, SEEK_SET);
  visitNumberedEntries(root_.get(), [&pids](std::int32_t pid) {
    pids.push_back(pid);
    return true;
  });
}

std::optional<std::uint64_t> ProcSocketHolders::cpuTime(std::int32_t pid) {
  return clock_.nanoseconds(pid);
}

std::optional<std::uint64_t> ProcSocketHolders::startTime(std::int32_t pid) {
  const Descriptor file(openat(root_.get(), pathOf(pid, "/stat").c_str(), O_RDONLY | O_CLOEXEC));
  if (!file) return std::nullopt;
  std::array<char, 1024> text{};
  const ssize_t length = read(file.get(), text.data(), text.size());
  if (length <= 0) return std::nullopt;
  const auto stat = parseProcStat({text.data(), static_cast<std::size_t>(length)});
  if (!stat || stat->state == 'Z' || stat->state == 'X') return std::nullopt;
  return stat->startTicks;
}

SocketHolders::Search ProcSocketHolders::visitSockets(
    std::int32_t pid, const std::function<bool(std::uint32_t inode)>& visit) {
  const Descriptor folder(
      openat(root_.get(), pathOf(pid, "/fd").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder) return Search::refused;
  bool stopped = false;
  const auto visitDescriptor = [&](std::int32_t descriptor) {
    const auto inode = socketInodeOf(folder.get(), descriptor);
    stopped = inode && !visit(*inode);
    return !stopped;
  };
  const bool complete = visitNumberedEntries(folder.get(), std::ref(visitDescriptor));
  if (complete) return Search::complete;
  return stopped ? Search::stopped : Search::refused;
}

}  // namespace platform

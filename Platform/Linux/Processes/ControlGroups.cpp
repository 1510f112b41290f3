#include "Platform/Linux/Processes/ControlGroups.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <iterator>
#include <string>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {
namespace {

constexpr std::string_view kUnified = "0::";
constexpr std::string_view kOutside = "/..";
constexpr std::string_view kTimeLabel = "usage_usec ";
/// A folder has one link more than it has folders in it, and one for its own name.
constexpr nlink_t kLinksOfALeaf = 2;

/// The path in the line of the unified hierarchy; empty when there is none.
std::string_view unifiedPath(std::string_view file) {
  while (!file.empty()) {
    const std::string_view line = file.substr(0, file.find('\n'));
    if (line.starts_with(kUnified)) return line.substr(kUnified.size());
    file.remove_prefix(std::min(file.size(), line.size() + 1));
  }
  return {};
}

std::string_view nextWord(std::string_view& line) {
  const std::string_view word = line.substr(0, line.find(' '));
  line.remove_prefix(std::min(line.size(), word.size() + 1));
  return word;
}

bool isLeaf(const std::string& folder) {
  struct stat status {};
  return stat(folder.c_str(), &status) == 0 && status.st_nlink <= kLinksOfALeaf;
}

}  // namespace

std::string ControlGroups::mountPoint(std::string_view mounts) {
  while (!mounts.empty()) {
    std::string_view line = mounts.substr(0, mounts.find('\n'));
    mounts.remove_prefix(std::min(mounts.size(), line.size() + 1));
    nextWord(line);
    const std::string_view place = nextWord(line);
    if (nextWord(line) == "cgroup2") return std::string(place);
  }
  return {};
}

std::string ControlGroups::mountPoint() {
  std::ifstream file("/proc/self/mounts");
  // Not by the stream's iterators, which throw when a reading fails.
  std::string mounts;
  std::getline(file, mounts, '\0');
  return mountPoint(mounts);
}

std::int32_t ControlGroups::number(std::string_view file) {
  const std::string_view path = unifiedPath(file);
  if (root_.empty() || path.size() <= 1 || path.starts_with(kOutside)) return 0;
  const auto known = numbers_.find(path);
  if (known != numbers_.end()) return known->second;
  numbers_.emplace(path, ++last_);
  paths_.emplace(last_, path);
  return last_;
}

std::optional<std::uint64_t> ControlGroups::microseconds(std::int32_t number) {
  const auto path = paths_.find(number);
  if (path == paths_.end()) return std::nullopt;
  const Descriptor file(open((root_ + path->second + "/cpu.stat").c_str(), O_RDONLY | O_CLOEXEC));
  std::array<char, 64> buffer{};
  const ssize_t length = read(file.get(), buffer.data(), buffer.size());
  if (length <= 0) return std::nullopt;
  std::string_view text(buffer.data(), static_cast<std::size_t>(length));
  if (!text.starts_with(kTimeLabel)) return std::nullopt;
  text.remove_prefix(kTimeLabel.size());
  std::uint64_t time = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), time);
  return error == std::errc() ? std::optional(time) : std::nullopt;
}

std::optional<std::vector<std::int32_t>> ControlGroups::members(std::int32_t number) {
  const auto path = paths_.find(number);
  if (path == paths_.end()) return std::nullopt;
  const std::string folder = root_ + path->second;
  if (!isLeaf(folder)) return std::nullopt;
  std::ifstream file(folder + "/cgroup.procs");
  const std::vector<std::int32_t> all{std::istream_iterator<std::int32_t>(file), {}};
  // A group of threads cannot be read, and one that has just been left has nobody to credit. Of a
  // list that ends too soon, the rest is not known.
  if (all.empty() || !file.eof()) return std::nullopt;
  return all;
}

void ControlGroups::keepOnly(const std::function<bool(std::int32_t number)>& isUsed) {
  std::erase_if(numbers_, [&](const auto& entry) {
    if (isUsed(entry.second)) return false;
    paths_.erase(entry.second);
    return true;
  });
}

}  // namespace platform

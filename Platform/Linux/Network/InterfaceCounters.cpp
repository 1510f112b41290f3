#include "Platform/Linux/Network/InterfaceCounters.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>

#include "Tidewell/TextReading.h"

namespace platform {
namespace {

constexpr std::size_t kFirstCapacity = 1024;
constexpr std::size_t kMostCapacity = std::size_t{1} << 20;

// Columns after the interface's name and colon.
constexpr int kReceivedColumn = 0;
constexpr int kSentColumn = 8;

std::optional<std::uint64_t> column(std::string_view columns, int index) {
  for (;; --index) {
    const std::size_t begin = columns.find_first_not_of(' ');
    if (begin == std::string_view::npos) return std::nullopt;
    columns.remove_prefix(begin);
    if (index == 0) break;
    columns.remove_prefix(std::min(columns.find(' '), columns.size()));
  }
  return tidewell::takeWholeNumber<std::uint64_t>(columns);
}

/// The sum of a line's two counters; 0 for the two lines of headings, which have no colon.
std::uint64_t lineSum(std::string_view line) {
  const std::size_t colon = line.rfind(':');
  if (colon == std::string_view::npos) return 0;
  const std::string_view columns = line.substr(colon + 1);
  return column(columns, kReceivedColumn).value_or(0) + column(columns, kSentColumn).value_or(0);
}

}  // namespace

InterfaceCounters::InterfaceCounters(const std::string& path)
    : file_(open(path.c_str(), O_RDONLY | O_CLOEXEC)), text_(kFirstCapacity, '\0') {}

std::optional<std::uint64_t> InterfaceCounters::sum() {
  const std::string_view text = readText();
  if (text.empty()) return std::nullopt;
  std::uint64_t total = 0;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    total += lineSum(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return total;
}

std::string_view InterfaceCounters::readText() {
  // The kernel gives a page at a time, even when more is asked for.
  for (std::size_t used = 0;;) {
    if (used == text_.size()) {
      if (used >= kMostCapacity) return {};
      text_.resize(2 * used);
    }
    const ssize_t count =
        pread(file_.get(), &text_[used], text_.size() - used, static_cast<off_t>(used));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return {};
    if (count == 0) return std::string_view(text_).substr(0, used);
    used += static_cast<std::size_t>(count);
  }
}

}  // namespace platform

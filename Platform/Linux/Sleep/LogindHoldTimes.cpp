#include "Platform/Linux/Sleep/LogindHoldTimes.h"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <map>
#include <system_error>
#include <utility>

#include "Platform/Linux/Files/RegularFile.h"
#include "Tidewell/ForeignText.h"
#include "Tidewell/TextReading.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLargestHoldFile = 65536;
/// logind itself stops there by default.
constexpr std::size_t kMostHoldFiles = 8192;

bool isOctal(char character) {
  return character >= '0' && character <= '7';
}

/// The character for which a letter behind a backslash stands; 0 when there is none.
char named(char letter) {
  constexpr std::string_view kLetters = "abfnrtvs";
  constexpr std::string_view kMeant = "\a\b\f\n\r\t\v ";
  const std::size_t index = kLetters.find(letter);
  return index == std::string_view::npos ? '\0' : kMeant[index];
}

/// `text` without the backslashes of C.
std::string unescaped(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    if (text.front() != '\\' || text.size() < 2) {
      result += text.front();
      text.remove_prefix(1);
    } else if (text.size() >= 4 && std::all_of(text.begin() + 1, text.begin() + 4, isOctal)) {
      const int code = (text[1] - '0') * 64 + (text[2] - '0') * 8 + (text[3] - '0');
      result += static_cast<char>(code);
      text.remove_prefix(4);
    } else {
      const char meant = named(text[1]);
      result += meant == '\0' ? text[1] : meant;
      text.remove_prefix(2);
    }
  }
  return result;
}

std::string valueOf(std::string_view text) {
  // Some versions put what a shell would take amiss into quotes.
  const bool isQuoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
  return unescaped(isQuoted ? text.substr(1, text.size() - 2) : text);
}

std::map<std::string_view, std::string_view> assignments(std::string_view text) {
  std::map<std::string_view, std::string_view> result;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    const std::size_t sign = line.find('=');
    if (line.starts_with('#') || sign == std::string_view::npos) continue;
    result.emplace(line.substr(0, sign), line.substr(sign + 1));
  }
  return result;
}

std::optional<tidewell::WallTime> madeAt(const fs::path& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) return std::nullopt;
  return tidewell::WallTime(std::chrono::seconds(status.st_mtim.tv_sec) +
                            std::chrono::nanoseconds(status.st_mtim.tv_nsec));
}

bool isOf(const LogindHoldFile& file, const ListedInhibitor& inhibitor) {
  return inhibitor.processIdentifier == file.process && inhibitor.user == file.user &&
         inhibitor.locks == file.what && inhibitor.holder == tidewell::cleaned(file.who) &&
         inhibitor.why == tidewell::cleaned(file.why);
}

}  // namespace

std::optional<LogindHoldFile> parseLogindHoldFile(std::string_view text) {
  const auto lines = assignments(text);
  const auto value = [&lines](std::string_view key) {
    const auto found = lines.find(key);
    return found == lines.end() ? std::string_view() : found->second;
  };
  const auto user = tidewell::wholeNumber<std::uint32_t>(value("UID"));
  const auto process = tidewell::wholeNumber<std::uint32_t>(value("PID"));
  if (!user || !process || value("WHAT").empty()) return std::nullopt;
  return LogindHoldFile{std::string(value("WHAT")), valueOf(value("WHO")), valueOf(value("WHY")),
                        *user, *process};
}

LogindHoldTimes::LogindHoldTimes(const fs::path& folder) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end;
       !error && entry != end && held_.size() < kMostHoldFiles; entry.increment(error)) {
    const fs::path pipe = entry->path();
    if (pipe.extension() != ".ref") continue;
    const auto since = madeAt(pipe);
    const RegularFile file = readRegularFile(fs::path(pipe).replace_extension(), kLargestHoldFile);
    if (!since || !file.exists || !file.error.empty()) continue;
    if (auto parsed = parseLogindHoldFile(file.text)) held_.push_back({std::move(*parsed), *since});
  }
  std::ranges::sort(held_, {}, &Held::since);
}

std::optional<tidewell::WallTime> LogindHoldTimes::take(const ListedInhibitor& inhibitor) {
  const auto found = std::ranges::find_if(
      held_, [&inhibitor](const Held& held) { return isOf(held.file, inhibitor); });
  if (found == held_.end()) return std::nullopt;
  const tidewell::WallTime since = found->since;
  held_.erase(found);
  return since;
}

}  // namespace platform

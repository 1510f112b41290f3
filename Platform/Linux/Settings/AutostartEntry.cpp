#include "Platform/Linux/Settings/AutostartEntry.h"

#include <cstddef>
#include <system_error>
#include <utility>

#include "Platform/Linux/Files/FileReplacement.h"
#include "Platform/Linux/Files/RegularFile.h"
#include "Platform/Linux/Files/XdgFolders.h"
#include "Platform/Linux/Settings/AutostartText.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

/// No entry that we write is that large.
constexpr std::size_t kMostBytes = 64 << 10;
constexpr const char* kNoHome = "there is no home folder";

/// Empty for a user without a home.
fs::path entryPath() {
  const fs::path configuration = xdgConfigHome();
  return configuration.empty() ? fs::path()
                               : configuration / "autostart" / "com.staylit.app.desktop";
}

bool holds(const fs::path& path, const std::string& text) {
  const RegularFile file = readRegularFile(path, kMostBytes);
  return file.error.empty() && file.exists && file.text == text;
}

std::string complaint(const char* verb, const fs::path& path, const std::string& why) {
  return std::string("cannot ") + verb + ' ' + path.string() + ": " + why;
}

}  // namespace

AutostartEntry::AutostartEntry(fs::path program) : program_(std::move(program)) {}

std::optional<std::string> AutostartEntry::registerItem() {
  const fs::path path = entryPath();
  if (path.empty()) return kNoHome;
  if (program_.empty()) return "the program's own path cannot be told";
  const std::string text = autostartText(program_);
  if (holds(path, text)) return std::nullopt;
  std::error_code error;
  fs::create_directories(path.parent_path(), error);
  if (error) return complaint("make", path.parent_path(), error.message());
  FileReplacement replacement(path, text);
  if (replacement.error().empty() && replacement.commit()) return std::nullopt;
  return complaint("write", path, replacement.error());
}

std::optional<std::string> AutostartEntry::unregisterItem() {
  const fs::path path = entryPath();
  // A missing file needs no removal.
  if (path.empty()) return std::nullopt;
  std::error_code error;
  fs::remove(path, error);
  if (error && error != std::errc::not_a_directory)
    return complaint("remove", path, error.message());
  return std::nullopt;
}

}  // namespace platform

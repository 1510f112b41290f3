#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Linux/Settings/TomlDefaults.h"
#include "Tests/Fakes/FakeSystemLog.h"
#include "Tests/Platform/Support/TemporaryFolder.h"
#include "Tidewell/Ports/Ports.h"

namespace platform {

/// A folder for a settings file, and a log that the test can read.
class SettingsFolder {
 public:
  SettingsFolder() { ports_.log = log_; }

  /// For stores that see each change of the file at once, and have patience with a slow machine.
  static SettingsKeeper::Timing patient() {
    constexpr std::chrono::milliseconds atOnce(0);
    constexpr std::chrono::minutes aMinute(1);
    return {aMinute, aMinute, atOnce, atOnce, atOnce, atOnce, aMinute};
  }

  [[nodiscard]] std::string file() const { return folder_.path("settings.toml"); }
  [[nodiscard]] std::string path(std::string_view name) const { return folder_.path(name); }

  /// Writes the settings file as if that had happened an hour ago.
  void write(std::string_view text) const {
    writeJustNow(text);
    age(file());
  }

  void writeJustNow(std::string_view text) const { folder_.write("settings.toml", text); }

  /// Makes a file look as if nobody had touched it for an hour.
  static void age(const std::string& file) {
    const timespec hourAgo[2] = {{time(nullptr) - 3600, 0}, {time(nullptr) - 3600, 0}};
    utimensat(AT_FDCWD, file.c_str(), hourAgo, 0);
  }

  static std::string read(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
  }
  [[nodiscard]] std::string read() const { return read(file()); }

  /// The names in the folder, sorted.
  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
      names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
  }

  [[nodiscard]] std::vector<std::string> logged() const { return log_->lines(); }

 private:
  testing::TemporaryFolder folder_;
  std::shared_ptr<tidewell::FakeSystemLog> log_ = std::make_shared<tidewell::FakeSystemLog>();
  tidewell::Ports ports_;
  tidewell::InstalledPorts installed_{ports_};
};

}  // namespace platform

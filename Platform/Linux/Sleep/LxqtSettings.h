#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// What LXQt's idleness watcher is set to do when nobody has used keyboard or mouse for a while.
class LxqtSettings {
 public:
  /// From the watcher's files in these folders. The most important folder comes first, as in
  /// `xdgConfigFolders`.
  static LxqtSettings read(const std::vector<std::filesystem::path>& folders);

  /// Puts the settings of such a file in front of those that are known.
  void add(std::string_view file);

  enum class Deed { none, toTheScreen, endsWork };
  [[nodiscard]] Deed deed(bool isOnAC) const;
  /// After how long without anybody.
  [[nodiscard]] std::chrono::milliseconds after(bool isOnAC) const;
  /// What says so, for people: "idlenessACAction is 4".
  [[nodiscard]] std::string setting(bool isOnAC) const;

 private:
  [[nodiscard]] long number(const std::string& key, long usual) const;
  [[nodiscard]] long action(bool isOnAC) const;

  std::map<std::string, std::string, std::less<>> values_;
};

}  // namespace platform

#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Linux/Settings/SettingsKeeper.h"
#include "Tidewell/Ports/Defaults.h"

namespace platform {

/// The settings in a TOML file, which people may edit while the program runs. Main thread only.
///
/// Every reading of a setting looks at the file first, and reads it again when it has changed. A
/// write changes only its key, under a lock and in one step, so that neither other processes nor
/// people with an editor lose anything, and comments stay. Whatever can be read of a damaged file
/// counts. Each failure is logged once. A value that cannot be saved counts until the process ends,
/// and is saved as soon as that is possible.
class TomlDefaults : public tidewell::Defaults {
 public:
  /// `$XDG_CONFIG_HOME/staylit/settings.toml`, or the same below `~/.config` when that variable is
  /// not set to an absolute path. Empty for a user without a home, whose settings are not saved.
  static std::filesystem::path defaultPath();

  /// The file and its folder need not exist. The constructor reads and writes nothing.
  explicit TomlDefaults(std::filesystem::path file, SettingsKeeper::Timing timing = {});

  void registerDefaults(const tidewell::PropertyDictionary& defaults) override;

  std::int64_t integer(std::string_view key) override;
  double real(std::string_view key) override;
  bool boolean(std::string_view key) override;
  std::optional<std::vector<std::string>> stringList(std::string_view key) override;

  void setInteger(std::string_view key, std::int64_t value) override;
  void setReal(std::string_view key, double value) override;
  void setBoolean(std::string_view key, bool value) override;
  void setStringList(std::string_view key, const std::vector<std::string>& value) override;

  std::vector<std::string> takeRemarks(const tidewell::SettingMeanings& meanings) override;
  std::string savingProblem() override { return keeper_.savingProblem(); }
  void finishWriting() override;

 private:
  tidewell::PropertyValue value(std::string_view key);

  tidewell::PropertyDictionary registered_;
  std::multiset<std::string> remarked_;  ///< The problems of the file, as they were told last.
  SettingsKeeper keeper_;
};

}  // namespace platform

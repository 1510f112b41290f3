#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Linux/Settings/SettingsFile.h"
#include "Platform/Linux/Settings/SettingsText.h"
#include "Tidewell/Ports/Defaults.h"

namespace platform {

/// The settings in a TOML file that people may edit while the program runs. Main thread only.
///
/// The file is looked at before each read of a setting, and read again when it has changed. A
/// write changes the one key, under a lock and at one stroke, so that processes that write
/// different keys lose nothing and comments stay. A damaged file is set aside under another name.
/// What goes wrong is logged once; a value that cannot be saved holds until the process ends and
/// is saved together with the next one that can.
class TomlDefaults : public tidewell::Defaults {
 public:
  /// `$XDG_CONFIG_HOME/staylit/settings.toml`, or below `~/.config` when that is not set to an
  /// absolute path. Empty for a user without a home: then nothing is saved.
  static std::filesystem::path defaultPath();

  /// The file and its folder need not exist; nothing is read or written yet.
  explicit TomlDefaults(std::filesystem::path file);

  void registerDefaults(const tidewell::PropertyDictionary& defaults) override;

  std::int64_t integer(std::string_view key) override;
  double real(std::string_view key) override;
  bool boolean(std::string_view key) override;
  std::optional<std::vector<std::string>> stringList(std::string_view key) override;

  void setInteger(std::string_view key, std::int64_t value) override;
  void setReal(std::string_view key, double value) override;
  void setBoolean(std::string_view key, bool value) override;
  void setStringList(std::string_view key, const std::vector<std::string>& value) override;

 private:
  tidewell::PropertyValue value(std::string_view key);
  void set(std::string_view key, tidewell::PropertyValue value);

  void refresh();
  void reload();
  void remember(const FileStamp& stamp);
  void setAsideDamaged();
  std::string setAside(const FolderLock& lock, const std::string& damage);
  std::string save();
  std::optional<std::string> withUnsaved(const RegularFile& content,
                                         const tidewell::PropertyDictionary& values) const;
  void complain(std::string& former, const std::string& complaint);

  SettingsFile file_;
  tidewell::PropertyDictionary registered_;
  tidewell::PropertyDictionary saved_;    ///< What the file said when it was read last.
  tidewell::PropertyDictionary unsaved_;  ///< What was set and could not be written.
  std::optional<FileStamp> stamp_;        ///< Of the file that `saved_` comes from, once settled.
  bool hasRead_ = false;                  ///< Whether a sound file, or none, was ever found.
  std::string readComplaint_;             ///< What was logged last, so as not to say it again.
  std::string saveComplaint_;
};

}  // namespace platform

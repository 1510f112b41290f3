#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Settings/PendingEdits.h"
#include "Platform/Linux/Settings/SettingsFile.h"
#include "Platform/Linux/Settings/SettingsText.h"

namespace platform {

/// What a settings file says, and how edits get into it. One thread at a time; any call may take as
/// long as the disk does.
///
/// Others change the file as they like. What is not whole although it was a moment ago (empty,
/// damaged, gone) may be half-written by an editor: it is believed once it has stayed the same for
/// `settling`. Of a file that stays damaged everything is read that can be, and the rest of it is
/// left as it stands.
class SettingsSource {
 public:
  SettingsSource(std::filesystem::path file, std::chrono::milliseconds settling);

  [[nodiscard]] const std::filesystem::path& path() const { return file_.path(); }

  /// Whether the file was ever read, or found missing.
  [[nodiscard]] bool isKnown() const { return accepted_.has_value(); }
  /// As far as they were last read.
  [[nodiscard]] const tidewell::PropertyDictionary& values() const { return values_; }

  /// Whether a key was removed that `values` does not have.
  [[nodiscard]] PendingEdits::Absence absence() const { return absence_; }

  /// Reads the file if it has changed.
  void look();

  struct Saving {
    enum class State { done, later, failed };
    State state;
    std::string why;  ///< Unless it is done.
  };

  /// Reads the file afresh, and writes into it those of the `edits` that nobody has overruled
  /// there; `failed` when one of them cannot be written, whatever becomes of the others. `later`
  /// when somebody else holds the folder or seems to be writing.
  Saving save(PendingEdits edits);

  /// Says once why saving does not succeed, until it does.
  void complainOfSaving(const std::string& why);

  /// What users must know, and have not been told yet.
  std::vector<std::string> takeComplaints();

 private:
  bool readAfresh(RegularFile& content);
  bool isBelieved(const RegularFile& content, const SettingsValues& settings);
  void keep(std::string text, SettingsValues settings);
  void accept(std::string text, SettingsValues settings);
  std::optional<Saving> tryToSave(PendingEdits& edits, const FolderLock& lock);
  void complain(std::string& former, const std::string& complaint);

  SettingsFile file_;
  const std::chrono::milliseconds settling_;
  std::optional<std::string> accepted_;  ///< The text that `values_` comes from.
  tidewell::PropertyDictionary values_;
  PendingEdits::Absence absence_ = PendingEdits::Absence::counts;
  std::optional<FileStamp> stamp_;       ///< Of that text's file, once another change would show.
  std::optional<std::string> doubtful_;  ///< The last text that was not believed.
  std::chrono::steady_clock::time_point doubtfulSince_;
  std::vector<std::string> complaints_;
  std::string readComplaint_;  ///< What was said last, so as not to say it again.
  std::string damageComplaint_;
  std::string saveComplaint_;
};

}  // namespace platform

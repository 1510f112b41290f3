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

/// Reads a settings file and writes edits into it. One thread at a time; any call may take as long
/// as the disk does.
///
/// Others may change the file at any time. A file that is empty, damaged or gone, although it was
/// whole a moment ago, may be half-written by an editor. It is believed only once it has stayed the
/// same for `settling`. Of a file that stays damaged, everything is read that can be read, and the
/// rest stays as it is.
class SettingsSource {
 public:
  SettingsSource(std::filesystem::path file, std::chrono::milliseconds settling);

  [[nodiscard]] const std::filesystem::path& path() const { return file_.path(); }

  /// Whether the file was ever read, or was found to be missing.
  [[nodiscard]] bool isKnown() const { return accepted_.has_value(); }
  /// The values as they were last read.
  [[nodiscard]] const tidewell::PropertyDictionary& values() const { return values_; }

  /// Whether a key that `values` does not have was removed from the file.
  [[nodiscard]] PendingEdits::Absence absence() const { return absence_; }

  /// Reads the file if it has changed.
  void look();

  struct Saving {
    enum class State { done, later, failed };
    State state;
    std::string why;  ///< Why it failed; empty when it is done.
  };

  /// Reads the file afresh, and writes into it those of the `edits` that nobody has overruled
  /// there. `failed` when one of them cannot be written, even if the others are. `later` when
  /// another process holds the folder or seems to be writing.
  Saving save(PendingEdits edits);

  /// Says once why saving does not succeed, and says it again only after saving succeeded.
  void complainOfSaving(const std::string& why);

  /// The texts that users must know and have not been told yet.
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
  std::optional<std::string> accepted_;  ///< The text from which `values_` comes.
  tidewell::PropertyDictionary values_;
  PendingEdits::Absence absence_ = PendingEdits::Absence::counts;
  /// The stamp of that text's file, once a further change would give another stamp.
  std::optional<FileStamp> stamp_;
  std::optional<std::string> doubtful_;  ///< The last text that was not believed.
  std::chrono::steady_clock::time_point doubtfulSince_;
  std::vector<std::string> complaints_;
  std::string readComplaint_;  ///< The last complaint, so that it is not repeated.
  std::string damageComplaint_;
  std::string saveComplaint_;
};

}  // namespace platform

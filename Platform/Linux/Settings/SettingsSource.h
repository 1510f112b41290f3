#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Linux/Settings/PendingEdits.h"
#include "Platform/Linux/Settings/SettingsFile.h"
#include "Platform/Linux/Settings/SettingsText.h"

namespace platform {

/// Reads a settings file and writes edits into it. One thread at a time; a slow disk makes every
/// call slow.
///
/// Others may change the file at any time. When a whole file becomes empty, damaged or missing, an
/// editor may be writing it. Such a state is believed only after it has lasted for `settling`. What
/// can be read of a damaged file is read, and the rest stays in the file.
class SettingsSource {
 public:
  SettingsSource(std::filesystem::path file, std::chrono::milliseconds settling);

  [[nodiscard]] const std::filesystem::path& path() const { return file_.path(); }

  /// Whether the file has ever been read, or been found missing.
  [[nodiscard]] bool isKnown() const { return accepted_.has_value(); }
  /// The values as they were last read.
  [[nodiscard]] const tidewell::PropertyDictionary& values() const { return values_; }

  /// What it means when `values` lacks a key.
  [[nodiscard]] PendingEdits::Absence absence() const { return absence_; }

  /// Reads the file if it has changed.
  void look();

  struct Saving {
    enum class State { done, later, failed };
    State state;
    std::string why;  ///< Why saving is not done; empty when it is.
  };

  /// Reads the file afresh and writes the `edits` into it, except those whose keys others have
  /// changed in the file. The state is `failed` when one of the edits cannot be written, even if
  /// the others were written. It is `later` when another process holds the folder or seems to be
  /// writing.
  Saving save(PendingEdits edits);

  /// Adds a complaint that says why saving fails. The same complaint is added again only after
  /// saving has succeeded.
  void complainOfSaving(const std::string& why);

  /// Hands over the text of the file when somebody else has changed it since the last call.
  std::optional<std::string> takeForeignText() { return std::exchange(foreign_, std::nullopt); }

  /// Why saving fails; empty once it has succeeded again.
  [[nodiscard]] const std::string& savingProblem() const { return savingProblem_; }

  /// Hands over the complaints that users must read and have not been told yet.
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
  /// The stamp of the file with that text; absent while a further change might give the same stamp.
  std::optional<FileStamp> stamp_;
  std::optional<std::string> foreign_;   ///< The accepted text of others that nobody took yet.
  std::optional<std::string> doubtful_;  ///< The last text that was not believed.
  std::chrono::steady_clock::time_point doubtfulSince_;
  std::vector<std::string> complaints_;
  std::string readComplaint_;  ///< The last complaint, so that it is not repeated.
  std::string damageComplaint_;
  std::string saveComplaint_;
  std::string savingProblem_;
};

}  // namespace platform

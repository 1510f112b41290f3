#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "Platform/Linux/Files/RegularFile.h"

namespace platform {

/// The new content of a file. It is written beside the file and takes the file's place in one step,
/// so that at any moment, even after a crash, the file is whole: the old one or the new one. When
/// the object is destroyed before that step, it removes the new content.
class FileReplacement {
 public:
  /// Writes `content` through to the disk, with the mode and the owner of the `target` that it will
  /// replace. A new file is accessible to its owner alone. On failure `error` says why.
  FileReplacement(const std::filesystem::path& target, std::string_view content);
  ~FileReplacement();
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;

  [[nodiscard]] const std::string& error() const { return error_; }

  /// Takes the target's place. When that fails, the result is false and `error` is set. Call it
  /// once, and only when there was no error before.
  bool commit();

  enum class Outcome {
    done,
    changed,  ///< The target is no longer what it was. It was left as it is now, or put back.
    busy,     ///< Another program has the target open for writing.
    failed,   ///< `error` says why.
  };

  /// Does the same as `commit`, but only if the target is still the file that was read. Nothing
  /// that others write until that moment is lost. Another program that opens the target for writing
  /// has to wait at most until this call returns.
  Outcome commitOver(const RegularFile& expected);

 private:
  Outcome commitAsNew();
  Outcome exchange(const RegularFile& expected);
  Outcome putBack();
  Outcome notPutBack();
  Outcome failure();

  std::filesystem::path target_;
  /// The name of the new file, or after an exchange the name of the old file. Empty while there is
  /// neither.
  std::string temporary_;
  FileStamp own_;  ///< The stamp of the new file.
  std::string error_;
};

}  // namespace platform

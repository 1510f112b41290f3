#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "Platform/Linux/Files/RegularFile.h"

namespace platform {

/// The new content of a file. It is written beside the file and takes its place in one step, so
/// that at any moment, even after a crash, the file is the old one or the new one. An object that
/// is destroyed before that removes the new content again.
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

  /// As `commit`, provided that the target is still the file that was read. What others write until
  /// that very moment is not lost. Somebody who opens the target for writing meanwhile waits only
  /// as long as this call takes.
  Outcome commitOver(const RegularFile& expected);

 private:
  Outcome commitAsNew();
  Outcome exchange(const RegularFile& expected);
  Outcome putBack();
  Outcome notPutBack();
  Outcome failure();

  std::filesystem::path target_;
  /// The name of the new file; after an exchange that of the old one. Empty when there is no such
  /// file yet, or no longer.
  std::string temporary_;
  FileStamp own_;  ///< The stamp of the new file.
  std::string error_;
};

}  // namespace platform

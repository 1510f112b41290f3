#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "Platform/Linux/Files/RegularFile.h"

namespace platform {

/// The new content of a file, written beside it and put in its place at one stroke, so that at
/// any moment, a crash included, the file is the old one or the new one. Removed again when it is
/// destroyed before that.
class FileReplacement {
 public:
  /// Writes `content` through to the disk, with the mode and the owner of the `target` that it is
  /// to replace; a new file is its owner's alone. On failure `error` says why.
  FileReplacement(const std::filesystem::path& target, std::string_view content);
  ~FileReplacement();
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;

  [[nodiscard]] const std::string& error() const { return error_; }

  /// Takes the target's place. False, and `error` set, when that fails. Call it once, and only
  /// when there was no error before.
  bool commit();

  enum class Outcome {
    done,
    changed,  ///< The target no longer is what it was; it was left, or put back, as it is now.
    busy,     ///< Another program has the target open for writing.
    failed,   ///< `error` says why.
  };

  /// As `commit`, provided that the target is still the one that was read: what others write up to
  /// the moment itself is not lost. Someone who opens the target for writing meanwhile waits, for
  /// no longer than this takes.
  Outcome commitOver(const RegularFile& expected);

 private:
  Outcome commitAsNew();
  Outcome exchange(const RegularFile& expected);
  Outcome putBack();
  Outcome failure();

  std::filesystem::path target_;
  std::string temporary_;  ///< Empty when there is no such file, or no longer.
  FileStamp own_;          ///< Of the new file.
  std::string error_;
};

}  // namespace platform

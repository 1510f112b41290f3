#pragma once

#include <optional>
#include <string>

namespace tidewell {

/// The few file operations that the core needs. Paths are absolute. Main thread only; each call
/// blocks until it is done.
class FileManager {
 public:
  virtual ~FileManager() = default;
  /// The current user's home folder, without a slash at the end.
  virtual std::string homeDirectory() = 0;
  /// Creates the folder and all folders above it that are missing. A folder that exists is no
  /// error. Returns why it failed, for people to read; absent on success.
  virtual std::optional<std::string> createDirectory(const std::string& path) = 0;
  /// Replaces the file as a whole or not at all. Returns why it failed, for people to read; absent
  /// on success.
  virtual std::optional<std::string> writeAtomically(const std::string& path,
                                                     const std::string& text) = 0;
  virtual bool exists(const std::string& path) = 0;
  /// False when it could not be removed.
  virtual bool remove(const std::string& path) = 0;
};

}  // namespace tidewell

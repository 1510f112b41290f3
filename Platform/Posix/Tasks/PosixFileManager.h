#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "Platform/Posix/ErrorDescription.h"
#include "Tidewell/Ports/FileManager.h"

namespace platform {

/// Works on the files of this machine. A replaced file keeps its mode. A new file has the mode that
/// the process's mask allows.
class PosixFileManager : public tidewell::FileManager {
 public:
  /// `home` is the user's home folder. `describe` makes the texts of failures.
  PosixFileManager(const std::filesystem::path& home, ErrorDescription describe);

  std::string homeDirectory() override { return home_; }
  std::optional<std::string> createDirectory(const std::string& path) override;
  std::optional<std::string> writeAtomically(const std::string& path,
                                             const std::string& text) override;
  bool exists(const std::string& path) override;
  bool remove(const std::string& path) override;

 private:
  std::string home_;
  ErrorDescription describe_;
};

}  // namespace platform

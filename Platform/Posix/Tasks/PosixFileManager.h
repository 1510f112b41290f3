#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "Platform/Posix/ErrorDescription.h"
#include "Tidewell/Ports/FileManager.h"

namespace platform {

/// The files of this machine. A file that is replaced keeps its mode; a new one has the mode that
/// the process's mask leaves.
class PosixFileManager : public tidewell::FileManager {
 public:
  /// `home` is the user's home folder; `describe` words the failures.
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

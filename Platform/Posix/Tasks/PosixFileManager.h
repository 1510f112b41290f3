#pragma once

#include <optional>
#include <string>

#include "Tidewell/Ports/FileManager.h"

namespace platform {

/// The files of this machine. What it writes is its owner's alone.
class PosixFileManager : public tidewell::FileManager {
 public:
  std::string homeDirectory() override;
  std::optional<std::string> createDirectory(const std::string& path) override;
  std::optional<std::string> writeAtomically(const std::string& path,
                                             const std::string& text) override;
  bool exists(const std::string& path) override;
  bool remove(const std::string& path) override;
};

}  // namespace platform

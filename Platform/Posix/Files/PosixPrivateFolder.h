#pragma once

#include <filesystem>

#include "Platform/Posix/Files/OwnFolder.h"
#include "Tidewell/Ports/PrivateFolder.h"

namespace platform {

/// A folder of the file system. A folder that it makes, and every file in it, is accessible to its
/// user alone. A folder that exists stays as it is.
class PosixPrivateFolder : public tidewell::PrivateFolder {
 public:
  enum class Trust {
    any,  ///< The user has chosen the folder, which must be there.
    own,  ///< The folder must be the user's, and nobody else may write there. It is made if
          ///< missing.
  };

  /// Nothing can be made where `path` is empty.
  PosixPrivateFolder(std::filesystem::path path, Trust trust);

  std::vector<Entry> list() override;
  Creation create(const std::string& name) override;
  void remove(const std::string& name) override;

 private:
  [[nodiscard]] OwnFolder chosenFolder() const;

  std::filesystem::path path_;
  Trust trust_;
};

}  // namespace platform

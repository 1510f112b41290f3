#pragma once

#include <filesystem>
#include <string>

#include "Platform/Posix/ErrorDescription.h"
#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// A folder that belongs to this user, and into which nobody else can put anything. No symbolic
/// link is followed in its place. Any thread.
struct OwnFolder {
  /// A folder that is there. `describe` makes the texts of failures.
  [[nodiscard]] static OwnFolder open(const std::filesystem::path& path, ErrorDescription describe);
  /// A folder that is made if it is missing, with the mode 0700. The folder above must exist.
  [[nodiscard]] static OwnFolder make(const std::filesystem::path& path, ErrorDescription describe);
  /// The same; missing folders above it are made too, for this user alone as well.
  [[nodiscard]] static OwnFolder makeAll(const std::filesystem::path& path,
                                         ErrorDescription describe);

  explicit operator bool() const { return static_cast<bool>(descriptor); }

  Descriptor descriptor;  ///< Empty on failure.
  std::string error;      ///< Why it failed, for people; empty on success.
};

/// Whether the open file or folder belongs to this user, and nobody else may write to it.
[[nodiscard]] bool isOwn(int descriptor);

}  // namespace platform

#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tidewell {

/// Runs a script that may ask the user for an administrator's approval. Blocks until the user has
/// answered. Main thread only.
class PrivilegedScripts {
 public:
  struct Error {
    std::optional<std::int64_t> number;  ///< -128: the user declined.
    std::string description;             ///< For people to read.
  };
  struct Outcome {
    bool couldBeMade = true;     ///< Whether a script could be made of the source at all.
    std::optional<Error> error;  ///< Absent when the script ran well.
  };

  virtual ~PrivilegedScripts() = default;
  virtual Outcome run(const std::string& source) = 0;
};

}  // namespace tidewell

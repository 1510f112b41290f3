#pragma once

#include <filesystem>
#include <string>

namespace platform {

/// Where such a part lies: beside the program or where it is installed. Empty when it is in neither
/// place. Any thread.
[[nodiscard]] std::filesystem::path moduleFile(const std::string& file);

/// A function of a part of the program that lies in a file of its own.
struct ModuleFunction {
  void* address = nullptr;  ///< Null when it cannot be had.
  /// The part is there, but of another build: it was replaced while the program runs, or only one
  /// of the two was replaced.
  bool isOfAnotherBuild = false;
  std::string why;  ///< Of one that cannot be had, as it is logged.
};

/// Loads such a part and finds `function` in it.
///
/// Only a part of this very build has it, by a name that no other build's part has: no function of
/// any other part is called, except for what runs by itself as a library is loaded and dropped.
/// Whatever fails is a line in the log. What was loaded stays. Any thread.
[[nodiscard]] ModuleFunction loadFromModule(const std::string& file, const std::string& function);

}  // namespace platform

#pragma once

#include <filesystem>
#include <string>

namespace platform {

/// Where the module lies: beside the program, or where it is installed. Empty when it is in neither
/// place. Any thread.
[[nodiscard]] std::filesystem::path moduleFile(const std::string& file);

/// A function of a module, which is a part of the program in a file of its own.
struct ModuleFunction {
  void* address = nullptr;  ///< Null when there is no such function.
  /// The module is there, but belongs to another build: it was replaced while the program runs, or
  /// only one of the two was replaced.
  bool isOfAnotherBuild = false;
  std::string why;  ///< Why there is no function, as the log says it.
};

/// Loads a module and finds `function` in it.
///
/// Only the module of this very build has the function, under a name that no other build has. So no
/// function of another build's module is called, except for what runs by itself when a library is
/// loaded and dropped. A failure is a line in the log. A module that was loaded stays. Any thread.
[[nodiscard]] ModuleFunction loadFromModule(const std::string& file, const std::string& function);

}  // namespace platform

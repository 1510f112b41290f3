#pragma once

#include <filesystem>
#include <string>

namespace platform {

/// The path of a module's file: beside the program, or where modules are installed. Empty when the
/// file is in neither place. Any thread.
[[nodiscard]] std::filesystem::path moduleFile(const std::string& file);

/// A function of a module. A module is a part of the program in a file of its own.
struct ModuleFunction {
  void* address = nullptr;  ///< Null when there is no such function.
  /// Whether the module belongs to another build than the program, because only one of the two was
  /// replaced, or because the program has run since before the replacement.
  bool isOfAnotherBuild = false;
  std::string why;  ///< Why there is no function, in the words of the log.
};

/// Loads a module and finds `function` in it.
///
/// The name of the function in the file contains the build's identity, so only the module of this
/// build has it. So no function of another build's module is called, except those that run by
/// themselves when a library is loaded or unloaded. A failure is a line in the log. A loaded module
/// stays loaded. Any thread.
[[nodiscard]] ModuleFunction loadFromModule(const std::string& file, const std::string& function);

}  // namespace platform

#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform::testing {

/// Makes `name` ("de_DE.UTF-8") the locale of the environment, for a scope.
///
/// The C library translates only in a locale that is installed, and a fresh machine has none but
/// C.UTF-8. Its files serve under any name, because only the name decides about the catalogue.
class MadeUpLocale {
 public:
  /// Why there can be no such locale here; absent when there can.
  static std::optional<std::string> obstacle() {
    std::error_code error;
    if (std::filesystem::exists(kFiles, error)) return std::nullopt;
    return std::string("the files of the locale C.UTF-8 are not at ") + kFiles;
  }

  explicit MadeUpLocale(const std::string& name) : all_("LC_ALL", name.c_str()) {
    std::error_code error;
    std::filesystem::create_directory_symlink(kFiles, folder_.path() / name, error);
  }

 private:
  static constexpr const char* kFiles = "/usr/lib/locale/C.utf8";

  TemporaryFolder folder_;
  ScopedEnvironment place_{"LOCPATH", folder_.path().c_str()};
  ScopedEnvironment all_;
  ScopedEnvironment languages_{"LANGUAGE", nullptr};
};

}  // namespace platform::testing

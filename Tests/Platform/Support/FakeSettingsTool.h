#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform::testing {

/// A tool in place of GSettings' own.
class FakeSettingsTool {
 public:
  /// Each is a "schema key" with the command of the shell that prints its value.
  explicit FakeSettingsTool(const std::map<std::string, std::string>& settings) {
    std::string script = "#!/bin/sh\n[ \"$1\" = get ] || exit 1\ncase \"$2 $3\" in\n";
    for (const auto& [key, command] : settings)
      script += "'" + key + "') " + command + ";;\n";
    path_ = folder_.write("tool", script + "*) exit 1;;\nesac\n");
    std::filesystem::permissions(path_, std::filesystem::perms(0700));
  }

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  TemporaryFolder folder_;
  std::string path_;
};

}  // namespace platform::testing

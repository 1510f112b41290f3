#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

namespace platform::testing {

/// A fresh folder that is removed with everything in it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = std::filesystem::temp_directory_path() / "staylit-test-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) std::abort();
    path_ = name;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  /// The path of `name` in the folder.
  [[nodiscard]] std::string path(std::string_view name) const { return (path_ / name).string(); }

  /// Replaces the content of a file in place. Makes the file and its folders if they are missing.
  /// Returns the path of the file.
  std::string write(const std::filesystem::path& name, std::string_view content) const {
    std::filesystem::create_directories((path_ / name).parent_path());
    std::ofstream(path_ / name, std::ios::binary) << content;
    return (path_ / name).string();
  }

  /// Writes a program for the shell. It ends at its first failure.
  std::string writeScript(std::string_view name, std::string_view body) const {
    const std::string file = write(name, "#!/bin/sh\nset -e\n" + std::string(body) + "\n");
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    return file;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace platform::testing

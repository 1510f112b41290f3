#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace platform {

/// A folder of the test's own, removed with all it holds.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "staylit-test-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
    path_ = name;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  [[nodiscard]] std::string path(std::string_view name = "") const {
    return (path_ / name).string();
  }

  /// Replaces the content of a file in place; makes it and its folders where need be.
  std::string write(std::string_view name, std::string_view content) const {
    std::filesystem::create_directories((path_ / name).parent_path());
    std::ofstream(path_ / name, std::ios::binary) << content;
    return path(name);
  }

  /// A program for the shell that ends at its first failure.
  std::string writeScript(std::string_view name, std::string_view body) const {
    const std::string file = write(name, "#!/bin/sh\nset -e\n" + std::string(body) + "\n");
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    return file;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace platform

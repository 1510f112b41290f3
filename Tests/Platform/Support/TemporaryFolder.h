#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

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

  void write(const std::filesystem::path& name, const std::string& text) const {
    std::filesystem::create_directories((path_ / name).parent_path());
    std::ofstream(path_ / name) << text;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace platform::testing

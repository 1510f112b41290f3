#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/FileManager.h"

namespace tidewell {

/// Files in memory.
class FakeFileManager : public FileManager {
 public:
  explicit FakeFileManager(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : calls_(std::move(calls)) {}

  std::string homeDirectory() override { return home; }

  std::optional<std::string> createDirectory(const std::string& path) override {
    calls_->add("create folder " + path);
    if (!createFailure) directories.insert(path);
    return createFailure;
  }

  std::optional<std::string> writeAtomically(const std::string& path,
                                             const std::string& text) override {
    calls_->add("write " + path);
    if (!writeFailure) files.insert_or_assign(path, text);
    return writeFailure;
  }

  bool exists(const std::string& path) override {
    return files.contains(path) || directories.contains(path);
  }

  bool remove(const std::string& path) override {
    calls_->add("remove " + path);
    if (removeFails) return false;
    return files.erase(path) + directories.erase(path) > 0;
  }

  std::string home = "/Users/me";
  std::map<std::string, std::string> files;  ///< The text of each file, by its path.
  std::set<std::string> directories;         ///< The folders that were created.
  std::optional<std::string> createFailure;
  std::optional<std::string> writeFailure;
  bool removeFails = false;

 private:
  std::shared_ptr<CallLog> calls_;
};

}  // namespace tidewell

#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Tidewell/Ports/PrivateFolder.h"

namespace tidewell {

/// A folder in memory.
class FakePrivateFolder : public PrivateFolder {
 public:
  std::vector<Entry> list() override {
    std::vector<Entry> entries;
    for (const auto& [name, content] : files)
      entries.push_back({name, content->size(), ages[name]});
    return entries;
  }
  Creation create(const std::string& name) override {
    if (!failure.empty()) return {nullptr, failure};
    if (files.contains(name)) return {nullptr, "it exists"};
    files[name] = std::make_shared<std::string>();
    return {std::make_unique<File>(*this, files[name]), ""};
  }
  void remove(const std::string& name) override { files.erase(name); }

  std::map<std::string, std::shared_ptr<std::string>> files;
  std::map<std::string, std::int64_t> ages;  ///< In seconds, by name.
  std::string failure;                       ///< Of everything that writes; empty: nothing fails.

 private:
  class File : public PrivateFile {
   public:
    File(FakePrivateFolder& folder, std::shared_ptr<std::string> content)
        : folder_(folder), content_(std::move(content)) {}
    std::string append(std::string_view bytes) override {
      if (folder_.failure.empty()) *content_ += bytes;
      return folder_.failure;
    }

   private:
    FakePrivateFolder& folder_;
    std::shared_ptr<std::string> content_;
  };
};

}  // namespace tidewell

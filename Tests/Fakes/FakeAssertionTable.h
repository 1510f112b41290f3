#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/AssertionTable.h"

namespace tidewell {

/// Other processes' assertions, as the test adds them.
class FakeAssertionTable : public AssertionTable {
 public:
  explicit FakeAssertionTable(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : calls_(std::move(calls)) {}

  std::optional<std::vector<Holder>> assertionsByProcess() override {
    calls_->add("list assertions");
    if (!answers) return std::nullopt;
    return holders;
  }

  std::int32_t ownProcessIdentifier() override { return own; }

  /// Adds a process that holds one assertion of `type` that is switched on.
  void hold(std::int64_t pid, const std::string& type) {
    holders.emplace_back(pid, std::vector<PropertyDictionary>{assertion(type, std::int64_t{255})});
  }

  static PropertyDictionary assertion(const std::string& type, const PropertyValue& level) {
    return {{"AssertType", type}, {"AssertLevel", level}};
  }

  bool answers = true;
  std::int32_t own = 99;
  std::vector<Holder> holders;

 private:
  std::shared_ptr<CallLog> calls_;
};

}  // namespace tidewell

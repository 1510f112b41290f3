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

/// Lists the assertions that the test adds.
class FakeAssertionTable : public AssertionTable {
 public:
  explicit FakeAssertionTable(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : calls_(std::move(calls)) {}

  std::optional<std::vector<AssertionHolder>> assertionsByProcess() override {
    calls_->add("list assertions");
    if (!answers) return std::nullopt;
    return holders;
  }

  std::int32_t ownProcessIdentifier() override { return own; }

  /// Adds a process with one assertion of `type`, which is switched on.
  void hold(std::int64_t pid, const std::string& type) {
    holders.push_back({pid, {{type, 255, ""}}});
  }

  bool answers = true;
  std::int32_t own = 99;
  std::vector<AssertionHolder> holders;

 private:
  std::shared_ptr<CallLog> calls_;
};

}  // namespace tidewell

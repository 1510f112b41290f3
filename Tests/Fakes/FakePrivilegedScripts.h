#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/PrivilegedScripts.h"

namespace tidewell {

/// Runs nothing, and answers as the test says.
class FakePrivilegedScripts : public PrivilegedScripts {
 public:
  explicit FakePrivilegedScripts(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : calls_(std::move(calls)) {}

  static Outcome declined() { return {true, Error{-128, "User canceled."}}; }
  static Outcome failed(std::optional<std::int64_t> number, std::string description) {
    return {true, Error{number, std::move(description)}};
  }
  static Outcome unusable() { return {false, std::nullopt}; }

  Outcome run(const std::string& source) override {
    calls_->add("run script " + source);
    sources.push_back(source);
    if (whileRunning) whileRunning();
    if (nextOutcomes.empty()) return outcome;
    Outcome next = std::move(nextOutcomes.front());
    nextOutcomes.pop_front();
    return next;
  }

  std::deque<Outcome> nextOutcomes;  ///< For the next runs, in order.
  Outcome outcome;                   ///< For all later runs. By default the script ran well.
  std::vector<std::string> sources;  ///< Of every run, in order.
  std::function<void()> whileRunning;

 private:
  std::shared_ptr<CallLog> calls_;
};

}  // namespace tidewell

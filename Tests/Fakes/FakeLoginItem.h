#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/LoginItem.h"

namespace tidewell {

/// Registers nothing, and remembers whether it was asked to.
class FakeLoginItem : public LoginItem {
 public:
  explicit FakeLoginItem(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : calls_(std::move(calls)) {}

  std::optional<std::string> registerItem() override {
    calls_->add("register login item");
    return change(true, registerFailure);
  }

  std::optional<std::string> unregisterItem() override {
    calls_->add("unregister login item");
    return change(false, unregisterFailure);
  }

  bool registered = false;
  /// What the two functions answer when there is something to change.
  std::optional<std::string> registerFailure;
  std::optional<std::string> unregisterFailure;

 private:
  std::optional<std::string> change(bool wanted, const std::optional<std::string>& failure) {
    if (registered == wanted) return std::nullopt;
    if (!failure) registered = wanted;
    return failure;
  }

  std::shared_ptr<CallLog> calls_;
};

}  // namespace tidewell

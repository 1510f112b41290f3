#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/LoginItem.h"

namespace tidewell {

/// Starts nothing; remembers whether it would.
class FakeLoginItem : public LoginItem {
 public:
  explicit FakeLoginItem(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : calls_(std::move(calls)) {}

  std::optional<std::string> registerItem() override {
    calls_->add("register login item");
    if (!registerFailure) registered = true;
    return registerFailure;
  }

  std::optional<std::string> unregisterItem() override {
    calls_->add("unregister login item");
    if (!unregisterFailure) registered = false;
    return unregisterFailure;
  }

  bool registered = false;
  std::optional<std::string> registerFailure;
  std::optional<std::string> unregisterFailure;

 private:
  std::shared_ptr<CallLog> calls_;
};

}  // namespace tidewell

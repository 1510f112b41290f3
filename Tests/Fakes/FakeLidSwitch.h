#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/LidSwitch.h"

namespace tidewell {

/// A lid switch that holds nothing and remembers what was asked of it. It is among the `FakePorts`
/// only once a test calls `useLidSwitch`.
class FakeLidSwitch : public LidSwitch {
 public:
  explicit FakeLidSwitch(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : calls_(std::move(calls)) {}

  std::optional<Failure> hold() override { return tryTo("hold lid without asking"); }

  void holdAsking(Answer answer) override {
    if (!takesItsTime) return answer(tryTo("hold lid"));
    calls_->add("ask for lid");
    asked = std::move(answer);
  }

  std::optional<Failure> resume() override { return tryTo("resume lid"); }

  std::optional<Failure> release() override {
    calls_->add("release lid");
    asked = {};
    triedAgain = false;
    if (!releaseFailure) held = false;
    return releaseFailure;
  }

  std::string lastFailure() override { return reason; }
  bool holds() override { return held; }
  bool isTriedAgain() override { return triedAgain && !held; }
  bool isHeld() override { return held; }

  std::shared_ptr<void> observe(std::function<void(bool)> changed) override {
    auto shared = std::make_shared<std::function<void(bool)>>(std::move(changed));
    observers_.push_back(shared);
    return shared;
  }

  /// The user answers the prompt that waits.
  void answer(std::optional<Failure> failure) {
    held = !failure;
    std::exchange(asked, {})(std::move(failure));
  }
  /// The hold is lost, or is back.
  void become(bool isHeldNow) {
    held = isHeldNow;
    for (const auto& weak : observers_) {
      if (const auto observer = weak.lock()) (*observer)(isHeldNow);
    }
  }

  bool held = false;
  bool triedAgain = false;    ///< Whether the switch is tried again while it is not held.
  bool takesItsTime = false;  ///< Whether a prompt waits until `answer` is called.
  Answer asked;               ///< Waits for the user's answer; empty when there is no prompt.
  std::string reason;         ///< Of the last attempt, in words.
  std::optional<Failure> holdFailure;
  std::optional<Failure> releaseFailure;

 private:
  std::optional<Failure> tryTo(const char* call) {
    calls_->add(call);
    if (!holdFailure) held = true;
    return holdFailure;
  }

  std::shared_ptr<CallLog> calls_;
  std::vector<std::weak_ptr<std::function<void(bool)>>> observers_;
};

}  // namespace tidewell

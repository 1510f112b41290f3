#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/LidSwitch.h"

namespace tidewell {

/// A lid switch that only remembers. Not among the `FakePorts` until a test puts it there.
class FakeLidSwitch : public LidSwitch {
 public:
  explicit FakeLidSwitch(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : calls_(std::move(calls)) {}

  std::optional<Failure> hold(Approval approval) override {
    calls_->add(approval == Approval::mayBeAsked ? "hold lid" : "hold lid without asking");
    if (!holdFailure) held = true;
    return holdFailure;
  }

  std::optional<Failure> release() override {
    calls_->add("release lid");
    if (!releaseFailure) held = false;
    return releaseFailure;
  }

  bool isHeld() override { return held; }

  bool held = false;
  std::optional<Failure> holdFailure;
  std::optional<Failure> releaseFailure;

 private:
  std::shared_ptr<CallLog> calls_;
};

}  // namespace tidewell

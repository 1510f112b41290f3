#include "Tidewell/SleepController.h"

#include "Tidewell/Log.h"

namespace tidewell {

SleepController::SleepController(PowerManagement& power) : power_(power) {}

SleepController::~SleepController() {
  release();
}

void SleepController::hold(const std::string& reason, bool keepScreenOn) {
  if (isHolding_) {
    updateReason(reason);
    syncDisplayAssertion(reason, keepScreenOn);
    return;
  }
  const auto creation = power_.createAssertion(AssertionKind::system, reason);
  if (creation.code != 0) {
    Log::error("failed to create sleep assertion: " + std::to_string(creation.code));
    return;
  }
  systemAssertion_ = creation.id;
  currentReason_ = reason;
  isHolding_ = true;
  syncDisplayAssertion(reason, keepScreenOn);
  Log::info("holding sleep — " + reason);
}

void SleepController::release() {
  releaseAssertion(systemAssertion_);
  releaseAssertion(displayAssertion_);
  if (isHolding_) Log::info("released sleep hold");
  isHolding_ = false;
  currentReason_.clear();
}

void SleepController::updateReason(const std::string& reason) {
  if (reason == currentReason_ || systemAssertion_ == 0) return;
  // The display assertion keeps the name that it was created with.
  power_.setAssertionName(systemAssertion_, reason);
  currentReason_ = reason;
}

void SleepController::syncDisplayAssertion(const std::string& reason, bool keepScreenOn) {
  if (!keepScreenOn) {
    releaseAssertion(displayAssertion_);
  } else if (displayAssertion_ == 0) {
    const auto creation = power_.createAssertion(AssertionKind::display, reason);
    if (creation.code == 0) displayAssertion_ = creation.id;
  }
}

void SleepController::releaseAssertion(std::uint32_t& assertion) {
  if (assertion == 0) return;
  power_.releaseAssertion(assertion);
  assertion = 0;
}

}  // namespace tidewell

#include "Platform/Linux/Sleep/SleepAssertion.h"

#include <algorithm>
#include <utility>

namespace platform {

SleepAssertion::SleepAssertion(HoldKind kind, std::string reason)
    : kind_(kind), reason_(std::move(reason)) {}

bool SleepAssertion::has(const InhibitMechanism& mechanism) const {
  const auto found = grants_.find(&mechanism);
  return found != grants_.end() && !found->second.isVoid;
}

bool SleepAssertion::isHeld() const {
  return std::any_of(grants_.begin(), grants_.end(),
                     [](const auto& entry) { return !entry.second.isVoid; });
}

bool SleepAssertion::isComplete() const {
  return std::all_of(wanted_.begin(), wanted_.end(),
                     [this](const auto* mechanism) { return has(*mechanism); });
}

int SleepAssertion::hold(const Mechanisms& wanted) {
  wanted_ = wanted;
  int firstError = 0;
  for (InhibitMechanism* mechanism : wanted) {
    if (has(*mechanism)) continue;
    const int error = take(*mechanism);
    if (firstError == 0) firstError = error;
  }
  const bool granted = std::any_of(wanted.begin(), wanted.end(),
                                   [this](const auto* mechanism) { return has(*mechanism); });
  if (!granted) return firstError;
  // What is void stays until its service is back: logind's locks outlive its own restart.
  std::erase_if(grants_, [&wanted](const auto& entry) {
    return !entry.second.isVoid &&
           std::find(wanted.begin(), wanted.end(), entry.first) == wanted.end();
  });
  return 0;
}

void SleepAssertion::rename(const std::string& reason, const Mechanisms& wanted) {
  wanted_ = wanted;
  reason_ = reason;
  for (InhibitMechanism* mechanism : wanted)
    take(*mechanism);
}

int SleepAssertion::take(InhibitMechanism& mechanism) {
  auto taken = mechanism.take(
      kind_, reason_,
      [weak = weak_from_this(), &mechanism, reason = reason_](std::unique_ptr<Inhibition> late) {
        const auto self = weak.lock();
        if (!self || self->reason_ != reason) return;
        const auto& wanted = self->wanted_;
        if (std::find(wanted.begin(), wanted.end(), &mechanism) == wanted.end()) return;
        self->accept(mechanism, std::move(late));
      });
  if (!taken.inhibition) return taken.error;
  accept(mechanism, std::move(taken.inhibition));
  return 0;
}

void SleepAssertion::accept(InhibitMechanism& mechanism, std::unique_ptr<Inhibition> inhibition) {
  Grant& grant = grants_[&mechanism];
  // The oldest is the one that is surely heeded, however often it is replaced meanwhile.
  const bool keepsFormer = grant.current && !grant.isVoid && !grant.former &&
                           mechanism.timeToTakeEffect() > tidewell::Seconds::zero();
  if (keepsFormer) grant.former = std::move(grant.current);
  if (grant.isVoid) grant.former.reset();
  grant.current = std::move(inhibition);
  grant.isVoid = false;
}

void SleepAssertion::lost(const InhibitMechanism& mechanism) {
  if (const auto found = grants_.find(&mechanism); found != grants_.end()) {
    found->second.isVoid = true;
  }
}

bool SleepAssertion::isSettling() const {
  return std::any_of(grants_.begin(), grants_.end(),
                     [](const auto& entry) { return entry.second.former != nullptr; });
}

void SleepAssertion::settle() {
  for (auto& [mechanism, grant] : grants_)
    grant.former.reset();
}

}  // namespace platform

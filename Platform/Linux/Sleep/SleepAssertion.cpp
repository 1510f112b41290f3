#include "Platform/Linux/Sleep/SleepAssertion.h"

#include <algorithm>
#include <utility>

namespace platform {
namespace {

/// The timers of a service may be late by so much.
constexpr std::chrono::seconds kMargin{1};

SleepAssertion::Moment heededAfter(SleepAssertion::Moment taken,
                                   const InhibitMechanism& mechanism) {
  const auto time =
      std::chrono::duration_cast<std::chrono::milliseconds>(mechanism.timeToTakeEffect());
  return time.count() == 0 ? taken : taken + time + kMargin;
}

}  // namespace

SleepAssertion::SleepAssertion(tidewell::AssertionKind kind, std::string reason, Now now,
                               std::function<void()> grantedLate)
    : kind_(kind),
      reason_(std::move(reason)),
      now_(std::move(now)),
      grantedLate_(std::move(grantedLate)) {}

const SleepAssertion::Service* SleepAssertion::find(const InhibitMechanism& mechanism) const {
  const auto found = services_.find(&mechanism);
  return found == services_.end() ? nullptr : &found->second;
}

bool SleepAssertion::has(const InhibitMechanism& mechanism) const {
  const Service* service = find(mechanism);
  return service && !service->isVoid && !service->grants.empty();
}

bool SleepAssertion::isWanted(const InhibitMechanism& mechanism) const {
  return std::find(wanted_.begin(), wanted_.end(), &mechanism) != wanted_.end();
}

bool SleepAssertion::isCurrent(const InhibitMechanism& mechanism) const {
  return has(mechanism) && find(mechanism)->grants.back().reason == reason_;
}

bool SleepAssertion::isHeld() const {
  return std::any_of(services_.begin(), services_.end(),
                     [this](const auto& entry) { return has(*entry.first); });
}

/// When to ask `mechanism`, whose grant is missing or has an old reason.
SleepAssertion::Moment SleepAssertion::due(const InhibitMechanism& mechanism) const {
  const Service* service = find(mechanism);
  if (!service) return {};
  if (!has(mechanism)) return service->notBefore;
  return std::max(service->notBefore, service->grants.back().taken + kPause);
}

int SleepAssertion::hold(const Mechanisms& wanted) {
  wanted_ = wanted;
  int firstError = 0;
  for (InhibitMechanism* mechanism : wanted) {
    if (isCurrent(*mechanism) || due(*mechanism) > now_()) continue;
    const int error = take(*mechanism);
    if (firstError == 0) firstError = error;
  }
  dropTheReplaced();
  const bool isGranted = std::any_of(wanted.begin(), wanted.end(),
                                     [this](const auto* mechanism) { return has(*mechanism); });
  if (!isGranted) return firstError;
  const auto heeded = wantedHeededSince();
  if (heeded && *heeded <= now_()) dropTheUnwanted();
  return 0;
}

int SleepAssertion::take(InhibitMechanism& mechanism) {
  auto taken = mechanism.take(kind_, reason_,
                              [weak = weak_from_this(), &mechanism,
                               reason = reason_](std::unique_ptr<Inhibition> inhibition) {
                                const auto self = weak.lock();
                                if (self) {
                                  self->grantedTooLate(mechanism, reason, std::move(inhibition));
                                }
                              });
  if (!taken.inhibition) {
    refused(mechanism);
    return taken.error;
  }
  accept(mechanism, reason_, std::move(taken.inhibition));
  return 0;
}

void SleepAssertion::refused(const InhibitMechanism& mechanism) {
  Service& service = services_[&mechanism];
  std::chrono::seconds pause = kFirstRetry;
  for (int doubled = 0; doubled < service.refusals && pause < kLongestRetry; ++doubled)
    pause *= 2;
  ++service.refusals;
  service.notBefore = now_() + std::min(pause, kLongestRetry);
}

/// Accepts a late grant if it is of use. Otherwise the grant is given back at once.
void SleepAssertion::grantedTooLate(InhibitMechanism& mechanism, const std::string& reason,
                                    std::unique_ptr<Inhibition> inhibition) {
  if (!isWanted(mechanism) || isCurrent(mechanism)) return;
  // A grant with a former reason is only better than none.
  const bool isOfUse = reason == reason_ || !has(mechanism);
  if (isOfUse) accept(mechanism, reason, std::move(inhibition));
  // The service answers again.
  returned(mechanism);
  grantedLate_();
}

void SleepAssertion::accept(InhibitMechanism& mechanism, const std::string& reason,
                            std::unique_ptr<Inhibition> inhibition) {
  Service& service = services_[&mechanism];
  // The void grants are dropped at the end, when the new one is there.
  const std::vector<Grant> former =
      service.isVoid ? std::exchange(service.grants, {}) : std::vector<Grant>();
  const Moment taken = now_();
  service.grants.push_back({std::move(inhibition), reason, taken, heededAfter(taken, mechanism)});
  service.isVoid = false;
  service.isGone = false;
  service.notBefore = {};
  service.refusals = 0;
}

void SleepAssertion::dropTheReplaced() {
  for (auto& [mechanism, service] : services_) {
    auto& grants = service.grants;
    const auto heeded =
        std::find_if(grants.rbegin(), grants.rend(),
                     [now = now_()](const auto& each) { return each.heeded <= now; });
    if (heeded != grants.rend()) grants.erase(grants.begin(), heeded.base() - 1);
  }
}

/// The first moment since when a wanted service heeds its grant.
std::optional<SleepAssertion::Moment> SleepAssertion::wantedHeededSince() const {
  std::optional<Moment> first;
  for (const InhibitMechanism* mechanism : wanted_) {
    if (!has(*mechanism)) continue;
    const Moment heeded = find(*mechanism)->grants.front().heeded;
    first = first ? std::min(*first, heeded) : heeded;
  }
  return first;
}

bool SleepAssertion::hasUnwanted() const {
  return std::any_of(services_.begin(), services_.end(), [this](const auto& entry) {
    return !isWanted(*entry.first) && !entry.second.isGone;
  });
}

void SleepAssertion::dropTheUnwanted() {
  std::erase_if(services_, [this](const auto& entry) {
    return !isWanted(*entry.first) && !entry.second.isGone;
  });
}

void SleepAssertion::lost(const InhibitMechanism& mechanism) {
  const auto found = services_.find(&mechanism);
  if (found == services_.end()) return;
  found->second.isVoid = true;
  found->second.isGone = true;
}

void SleepAssertion::returned(const InhibitMechanism& mechanism) {
  const auto found = services_.find(&mechanism);
  if (found == services_.end()) return;
  found->second.isGone = false;
  found->second.notBefore = {};
  found->second.refusals = 0;
}

bool SleepAssertion::isMissing(const InhibitMechanism& mechanism, Moment askedAt, Reasons& listed) {
  if (!has(mechanism)) return false;
  Service& service = services_[&mechanism];
  // Only the last grant must be listed; the older ones may be.
  for (const Grant& grant : service.grants) {
    const auto entry = listed.find(mechanism.told(grant.reason));
    const bool isListed = entry != listed.end();
    if (isListed) listed.erase(entry);
    if (&grant != &service.grants.back() || isListed || grant.heeded > askedAt) continue;
    service.isVoid = true;
  }
  return service.isVoid;
}

std::optional<SleepAssertion::Moment> SleepAssertion::nextDue() const {
  std::optional<Moment> next;
  const auto consider = [&next](Moment moment) { next = next ? std::min(*next, moment) : moment; };
  for (const InhibitMechanism* mechanism : wanted_) {
    if (!isCurrent(*mechanism)) consider(due(*mechanism));
  }
  for (const auto& [mechanism, service] : services_) {
    // When the second grant is heeded, the first one can be dropped.
    if (service.grants.size() > 1) consider(service.grants[1].heeded);
  }
  const auto heeded = wantedHeededSince();
  if (heeded && hasUnwanted()) consider(*heeded);
  return next;
}

std::optional<SleepAssertion::Moment> SleepAssertion::heededSince(
    const InhibitMechanism& mechanism) const {
  if (!has(mechanism)) return std::nullopt;
  return find(mechanism)->grants.back().heeded;
}

}  // namespace platform

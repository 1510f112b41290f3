#include "Platform/Linux/Sleep/ReadBack.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "Tidewell/Log.h"

namespace platform {
namespace {

constexpr std::chrono::seconds kAfterAChange{3};
constexpr std::chrono::seconds kLeastPause{30};
constexpr std::chrono::seconds kWhileNothingChanges{60};
/// After so many misses in a row the list is no longer asked for, because it never shows what the
/// service grants.
constexpr int kMostMissesInARow = 3;

}  // namespace

ReadBack::ReadBack(SleepAssertion::Now now, Compare compare)
    : now_(std::move(now)), compare_(std::move(compare)) {}

std::optional<ReadBack::Moment> ReadBack::due(const InhibitMechanism& mechanism,
                                              Moment heededSince) const {
  const Moment listedBy = heededSince + kAfterAChange;
  const Moment earliest = lastList_ ? std::max(listedBy, *lastList_ + kLeastPause) : listedBy;
  const auto asked = asked_.find(&mechanism);
  if (asked == asked_.end()) return earliest;
  if (asked->second.misses >= kMostMissesInARow) return std::nullopt;
  const Moment last = asked->second.at;
  return last < listedBy ? earliest : std::max(earliest, last + kWhileNothingChanges);
}

ReadBack::Moment ReadBack::lastAsked(const InhibitMechanism& mechanism) const {
  const auto asked = asked_.find(&mechanism);
  return asked == asked_.end() ? Moment() : asked->second.at;
}

std::optional<ReadBack::Moment> ReadBack::lastSeen(const InhibitMechanism& mechanism) const {
  const auto asked = asked_.find(&mechanism);
  return asked == asked_.end() ? std::nullopt : asked->second.seen;
}

void ReadBack::ask(InhibitMechanism& mechanism) {
  Asked& asked = asked_[&mechanism];
  asked.at = now_();
  asked.question = mechanism.list([this, &mechanism](const std::vector<std::string>& reasons) {
    heard(mechanism, Reasons(reasons.begin(), reasons.end()));
  });
  if (asked.question) lastList_ = asked.at;
}

void ReadBack::heard(InhibitMechanism& mechanism, const Reasons& listed) {
  Asked& asked = asked_[&mechanism];
  if (compare_(mechanism, asked.at, listed)) {
    asked.misses = 0;
    asked.seen = asked.at;
    return;
  }
  const std::string name = mechanism.serviceName();
  if (++asked.misses < kMostMissesInARow) {
    tidewell::Log::error(name + " no longer lists the hold that it granted: it is taken again");
  } else {
    tidewell::Log::error(name +
                         " never lists the hold that it grants: its list is not asked again");
  }
}

void ReadBack::forget(InhibitMechanism& mechanism) {
  asked_.erase(&mechanism);
  mechanism.forgetList();
}

}  // namespace platform

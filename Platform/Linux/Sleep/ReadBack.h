#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "Platform/Linux/Sleep/InhibitMechanism.h"
#include "Platform/Linux/Sleep/SleepAssertion.h"

namespace platform {

/// Asks the services whether they still have what they granted, and does not wait for it: some
/// seconds after they were given something, then once a minute, and of all services together no
/// more than one list in half a minute. A list is one call, but of a session manager, which tells
/// of each inhibitor by itself: there up to 32 calls follow, about those that are new on it. Owned
/// by `SleepInhibitors`; main thread only; the mechanisms must outlive it.
class ReadBack {
 public:
  using Moment = SleepAssertion::Moment;
  using Reasons = SleepAssertion::Reasons;
  /// Gets the list that `mechanism` had at `askedAt`, and tells whether it had all that it granted.
  using Compare =
      std::function<bool(InhibitMechanism& mechanism, Moment askedAt, const Reasons& listed)>;

  ReadBack(SleepAssertion::Now now, Compare compare);

  /// `heededSince`: since when `mechanism` has heeded the last of what it grants.
  [[nodiscard]] std::optional<Moment> due(const InhibitMechanism& mechanism,
                                          Moment heededSince) const;
  /// When `mechanism` was asked the last time; long ago if it never was.
  [[nodiscard]] Moment lastAsked(const InhibitMechanism& mechanism) const;
  void ask(InhibitMechanism& mechanism);
  /// When the last list of `mechanism` was asked for that had all it granted; absent when there was
  /// none.
  [[nodiscard]] std::optional<Moment> lastSeen(const InhibitMechanism& mechanism) const;

  /// Its service has gone, and with it what is known of its list.
  void forget(InhibitMechanism& mechanism);

 private:
  struct Asked {
    Moment at;
    std::shared_ptr<void> question;
    int misses = 0;  ///< In a row.
    std::optional<Moment> seen;
  };

  void heard(InhibitMechanism& mechanism, const Reasons& listed);

  SleepAssertion::Now now_;
  Compare compare_;
  std::map<const InhibitMechanism*, Asked> asked_;
  /// When any list was asked for the last time.
  std::optional<Moment> lastList_;
};

}  // namespace platform

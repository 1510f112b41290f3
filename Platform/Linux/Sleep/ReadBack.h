#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "Platform/Linux/Sleep/InhibitMechanism.h"
#include "Platform/Linux/Sleep/SleepAssertion.h"

namespace platform {

/// Asks the services whether they still have what they granted, and does not wait for the answers.
/// It asks a service some seconds after the service granted something, and then once a minute. At
/// most one list is asked for in half a minute.
///
/// A list costs one call. A session manager tells of each inhibitor by itself, which costs up to 32
/// more calls for new inhibitors. `SleepInhibitors` owns this object; main thread only; the
/// mechanisms must outlive it.
class ReadBack {
 public:
  using Moment = SleepAssertion::Moment;
  using Reasons = SleepAssertion::Reasons;
  /// Gets the list that `mechanism` had at `askedAt`. Returns whether everything that it granted is
  /// there.
  using Compare =
      std::function<bool(InhibitMechanism& mechanism, Moment askedAt, const Reasons& listed)>;

  ReadBack(SleepAssertion::Now now, Compare compare);

  /// When to ask `mechanism`; absent when it is not asked any more. `heededSince` is the time since
  /// when it has heeded the last wish that it granted.
  [[nodiscard]] std::optional<Moment> due(const InhibitMechanism& mechanism,
                                          Moment heededSince) const;
  /// When `mechanism` was asked last. The earliest moment if it never was.
  [[nodiscard]] Moment lastAsked(const InhibitMechanism& mechanism) const;
  void ask(InhibitMechanism& mechanism);
  /// When the last list of `mechanism` was asked for that had all it granted; absent when there was
  /// none.
  [[nodiscard]] std::optional<Moment> lastSeen(const InhibitMechanism& mechanism) const;

  /// Forgets what is known of the list, because the service has gone.
  void forget(InhibitMechanism& mechanism);

 private:
  struct Asked {
    Moment at;
    std::shared_ptr<void> question;
    int misses = 0;  ///< How many misses there were in a row.
    std::optional<Moment> seen;
  };

  void heard(InhibitMechanism& mechanism, const Reasons& listed);

  SleepAssertion::Now now_;
  Compare compare_;
  std::map<const InhibitMechanism*, Asked> asked_;
  /// When the last list of any service was asked for.
  std::optional<Moment> lastList_;
};

}  // namespace platform

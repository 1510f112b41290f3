#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Platform/Linux/Sleep/InhibitMechanism.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/PowerManagement.h"

namespace platform {

/// One live assertion: what each service granted for it. Destroying it takes everything back.
///
/// No service can rename, so that a new reason means a new grant, and the old one goes when the
/// service surely heeds the new one. A service is asked for that at once when its last change is
/// some seconds ago, and otherwise when it is. What it did not grant is asked for again.
///
/// Main thread only; owned through a `std::shared_ptr`, and the mechanisms must outlive it.
class SleepAssertion : public std::enable_shared_from_this<SleepAssertion> {
 public:
  using Mechanisms = std::vector<InhibitMechanism*>;
  using Moment = tidewell::Moment;
  using Now = std::function<Moment()>;
  using Reasons = std::multiset<std::string>;

  /// The least time between two changes of what a service grants.
  static constexpr std::chrono::seconds kPause{5};
  /// How long nothing is asked for after a refusal; doubles with each further one.
  static constexpr std::chrono::seconds kFirstRetry{3};
  static constexpr std::chrono::seconds kLongestRetry{60};

  /// `grantedLate` runs from the loop when a service granted something after all.
  SleepAssertion(tidewell::AssertionKind kind, std::string reason, Now now,
                 std::function<void()> grantedLate);

  [[nodiscard]] tidewell::AssertionKind kind() const { return kind_; }
  [[nodiscard]] const std::string& reason() const { return reason_; }
  [[nodiscard]] bool isHeld() const;
  /// Whether `mechanism` grants it, under its name or a former one.
  [[nodiscard]] bool has(const InhibitMechanism& mechanism) const;

  /// Asks those that `wanted` names for what is due, then drops what was replaced and need not be
  /// kept any more, and once one of them heeds what it grants, what others grant that are no longer
  /// wanted. 0 when at least one of them grants it, else the negative errno of the first refusal.
  int hold(const Mechanisms& wanted);

  /// Has an effect with the next `hold`.
  void rename(std::string reason) { reason_ = std::move(reason); }

  /// What `mechanism` granted is void: its service has gone.
  void lost(const InhibitMechanism& mechanism);
  /// Its service is there again and is to be asked at once.
  void returned(const InhibitMechanism& mechanism);

  /// Compares what `mechanism` grants with the list that it had at `askedAt`, takes what is this
  /// assertion's out of `listed`, and tells whether anything is missing, which is void from now on.
  bool isMissing(const InhibitMechanism& mechanism, Moment askedAt, Reasons& listed);

  /// When `hold` has something to do again; absent when there is nothing to be done.
  [[nodiscard]] std::optional<Moment> nextDue() const;
  /// Since when `mechanism` has heeded what it grants now, which may be in the future; absent when
  /// it grants nothing.
  [[nodiscard]] std::optional<Moment> heededSince(const InhibitMechanism& mechanism) const;

 private:
  struct Grant {
    std::unique_ptr<Inhibition> inhibition;
    std::string reason;
    Moment taken;
    Moment heeded;
  };
  /// What one service granted, and how it answered.
  struct Service {
    /// The oldest first. All but the last are kept until a later one is heeded.
    std::vector<Grant> grants;
    /// Void grants stay until there is a new one: logind's locks outlive its own restart.
    bool isVoid = false;
    bool isGone = false;
    Moment notBefore{};  ///< When it may be asked again after a refusal.
    int refusals = 0;    ///< In a row.
  };

  int take(InhibitMechanism& mechanism);
  void grantedTooLate(InhibitMechanism& mechanism, const std::string& reason,
                      std::unique_ptr<Inhibition> inhibition);
  void accept(InhibitMechanism& mechanism, const std::string& reason,
              std::unique_ptr<Inhibition> inhibition);
  void refused(const InhibitMechanism& mechanism);
  [[nodiscard]] const Service* find(const InhibitMechanism& mechanism) const;
  [[nodiscard]] bool isWanted(const InhibitMechanism& mechanism) const;
  [[nodiscard]] bool isCurrent(const InhibitMechanism& mechanism) const;
  [[nodiscard]] Moment due(const InhibitMechanism& mechanism) const;
  [[nodiscard]] std::optional<Moment> wantedHeededSince() const;
  [[nodiscard]] bool hasUnwanted() const;
  void dropTheUnwanted();
  void dropTheReplaced();

  tidewell::AssertionKind kind_;
  std::string reason_;
  Now now_;
  std::function<void()> grantedLate_;
  Mechanisms wanted_;
  std::map<const InhibitMechanism*, Service> services_;
};

}  // namespace platform

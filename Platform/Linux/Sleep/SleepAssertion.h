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

/// One live assertion, with everything that the services have granted for it. Destroying it takes
/// everything back.
///
/// No service can rename a grant, so a new reason means a new grant. The old grant is dropped when
/// the service certainly heeds the new one. A service is asked for a change at most every few
/// seconds. What it refused is asked for again.
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
  /// The pause after a refusal. It doubles with each further refusal.
  static constexpr std::chrono::seconds kFirstRetry{3};
  static constexpr std::chrono::seconds kLongestRetry{60};

  /// `grantedLate` runs from the loop when a service has granted something after the call had timed
  /// out.
  SleepAssertion(tidewell::AssertionKind kind, std::string reason, Now now,
                 std::function<void()> grantedLate);

  [[nodiscard]] tidewell::AssertionKind kind() const { return kind_; }
  [[nodiscard]] const std::string& reason() const { return reason_; }
  [[nodiscard]] bool isHeld() const;
  /// Whether `mechanism` grants it, under its name or a former one.
  [[nodiscard]] bool has(const InhibitMechanism& mechanism) const;

  /// Asks the `wanted` services for what is due. Then drops the grants that were replaced and need
  /// not be kept any more. When a wanted service heeds its grant, also drops the grants of services
  /// that are no longer wanted. Returns 0 when at least one wanted service grants the assertion,
  /// else the negative errno of the first refusal.
  int hold(const Mechanisms& wanted);

  /// The new reason counts from the next `hold` on.
  void rename(std::string reason) { reason_ = std::move(reason); }

  /// The service of `mechanism` has gone, so its grants are void.
  void lost(const InhibitMechanism& mechanism);
  /// The service of `mechanism` is back, and may be asked at once.
  void returned(const InhibitMechanism& mechanism);

  /// Compares the grants of `mechanism` with the list that it had at `askedAt`, and takes this
  /// assertion's entries out of `listed`. Returns whether a grant is missing; it is void from now
  /// on.
  bool isMissing(const InhibitMechanism& mechanism, Moment askedAt, Reasons& listed);

  /// When `hold` has something to do again; absent for never.
  [[nodiscard]] std::optional<Moment> nextDue() const;
  /// Since when `mechanism` heeds its present grant. This may lie in the future. Absent when it
  /// grants nothing.
  [[nodiscard]] std::optional<Moment> heededSince(const InhibitMechanism& mechanism) const;

 private:
  struct Grant {
    std::unique_ptr<Inhibition> inhibition;
    std::string reason;
    Moment taken;
    Moment heeded;
  };
  /// The grants of one service, and its last answers.
  struct Service {
    /// The oldest grant comes first. A grant is kept until a later one is heeded.
    std::vector<Grant> grants;
    /// Void grants are kept until there is a new one, because logind's locks may outlive its
    /// restart.
    bool isVoid = false;
    bool isGone = false;
    Moment notBefore{};  ///< When the service may be asked again after a refusal.
    int refusals = 0;    ///< How many refusals there were in a row.
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

#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Linux/Sleep/HoldKind.h"
#include "Platform/Linux/Sleep/InhibitMechanism.h"

namespace platform {

/// One live assertion: what each service granted for it. Destroying it takes everything back.
/// Main thread only; owned through a `std::shared_ptr`, and the mechanisms must outlive it.
class SleepAssertion : public std::enable_shared_from_this<SleepAssertion> {
 public:
  using Mechanisms = std::vector<InhibitMechanism*>;

  SleepAssertion(HoldKind kind, std::string reason);

  [[nodiscard]] HoldKind kind() const { return kind_; }
  [[nodiscard]] bool isHeld() const;
  /// Whether everything that was wanted last is granted.
  [[nodiscard]] bool isComplete() const;

  /// Takes what `wanted` names and is missing or was lost, then drops what others grant that are no
  /// longer wanted. 0 when at least one grants it, else the negative errno of the first refusal.
  int hold(const Mechanisms& wanted);

  /// Takes everything anew under `reason`; each new grant is there before the old one goes, and
  /// where the new one is refused the old one stays.
  void rename(const std::string& reason, const Mechanisms& wanted);

  /// What `mechanism` granted is void.
  void lost(const InhibitMechanism& mechanism);

  /// Whether a replaced grant is still kept because the service may not yet heed the new one.
  [[nodiscard]] bool isSettling() const;
  /// Drops the replaced grants.
  void settle();

 private:
  struct Grant {
    std::unique_ptr<Inhibition> current;
    /// Replaced, and kept until the current one has taken effect.
    std::unique_ptr<Inhibition> former;
    bool isVoid = false;
  };

  int take(InhibitMechanism& mechanism);
  void accept(InhibitMechanism& mechanism, std::unique_ptr<Inhibition> inhibition);
  [[nodiscard]] bool has(const InhibitMechanism& mechanism) const;

  HoldKind kind_;
  std::string reason_;
  Mechanisms wanted_;
  std::map<const InhibitMechanism*, Grant> grants_;
};

}  // namespace platform

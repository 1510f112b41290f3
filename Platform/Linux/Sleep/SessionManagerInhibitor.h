#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/InhibitMechanism.h"
#include "Tidewell/Ports/PowerManagement.h"

namespace platform {

/// Takes inhibitors from the session manager of GNOME, MATE and Cinnamon.
class SessionManagerInhibitor : public InhibitMechanism {
 public:
  /// `sessionBus` must outlive this and what it takes.
  explicit SessionManagerInhibitor(Bus& sessionBus);

  [[nodiscard]] const char* serviceName() const override;
  Taken take(tidewell::AssertionKind kind, const std::string& reason, Late late) override;
  [[nodiscard]] std::string told(const std::string& reason) const override;
  [[nodiscard]] std::shared_ptr<void> list(Listed listed) override;
  void forgetList() override { known_->clear(); }

 private:
  class Reading;
  /// For the object path of each inhibitor: the reason if the inhibitor belongs to this program,
  /// else nothing. These facts never change.
  using Known = std::map<std::string, std::optional<std::string>>;

  Bus& sessionBus_;
  std::shared_ptr<Known> known_ = std::make_shared<Known>();
};

}  // namespace platform

#pragma once

#include <cstdint>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Bus/BusNames.h"
#include "Platform/Linux/Sleep/InhibitMechanism.h"

namespace platform {

/// A wish that a session service has granted. The service gave a number for it (a cookie).
///
/// Only the process that granted the wish is told of its end. A successor under the same name may
/// have given the same number to somebody else.
class CookieInhibition : public Inhibition {
 public:
  /// Calls `inhibit`, whose reply is the cookie. The method `releaseMember` of the same interface
  /// takes the cookie back. The texts of `inhibit` and `bus` must outlive the inhibition.
  static InhibitMechanism::Taken take(Bus& bus, const BusMethod& inhibit,
                                      const Bus::Arguments& arguments, const char* releaseMember,
                                      InhibitMechanism::Late late);
  ~CookieInhibition() override;

 private:
  CookieInhibition(Bus& bus, const BusMethod& release, std::string granter, std::uint32_t cookie);
  static InhibitMechanism::Taken fromReply(Bus& bus, const BusMethod& release,
                                           sd_bus_message* reply);

  Bus& bus_;
  BusMethod release_;
  std::string granter_;
  std::uint32_t cookie_;
  std::uint64_t connectionNumber_;
};

}  // namespace platform

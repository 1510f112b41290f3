#include "Platform/Linux/Sleep/SessionManagerInhibitor.h"

#include <cstdint>
#include <utility>

#include "Platform/Linux/Sleep/CookieInhibition.h"
#include "Platform/Linux/Sleep/Services.h"
#include "Tidewell/ForeignText.h"

namespace platform {
namespace {

constexpr std::uint32_t kSuspendFlag = 4;
constexpr std::uint32_t kIdleFlag = 8;
constexpr std::uint32_t kNoWindow = 0;

}  // namespace

SessionManagerInhibitor::SessionManagerInhibitor(Bus& sessionBus) : sessionBus_(sessionBus) {}

const char* SessionManagerInhibitor::serviceName() const {
  return services::kSessionManager;
}

InhibitMechanism::Taken SessionManagerInhibitor::take(HoldKind kind, const std::string& reason,
                                                      Late late) {
  const std::uint32_t flags = kind == HoldKind::display ? kSuspendFlag | kIdleFlag : kSuspendFlag;
  // An empty reason is refused.
  const std::string text = reason.empty() ? services::kDisplayName : tidewell::cleaned(reason);
  return CookieInhibition::take(
      sessionBus_,
      {services::kSessionManager, services::kSessionManagerPath, services::kSessionManager,
       "Inhibit"},
      [&](sd_bus_message* message) {
        return sd_bus_message_append(message, "susu", services::kApplicationId, kNoWindow,
                                     text.c_str(), flags);
      },
      "Uninhibit", std::move(late));
}

}  // namespace platform

#include "Platform/Linux/Sleep/FreedesktopInhibitor.h"

#include <utility>

#include "Platform/Linux/Sleep/CookieInhibition.h"
#include "Platform/Linux/Sleep/Services.h"
#include "Tidewell/ForeignText.h"

namespace platform {

FreedesktopInhibitor::FreedesktopInhibitor(Bus& sessionBus, const char* service, const char* path,
                                           const char* interface)
    : sessionBus_(sessionBus), service_(service), path_(path), interface_(interface) {}

FreedesktopInhibitor FreedesktopInhibitor::powerManagement(Bus& sessionBus) {
  return {sessionBus, services::kPowerManagement, "/org/freedesktop/PowerManagement/Inhibit",
          "org.freedesktop.PowerManagement.Inhibit"};
}

FreedesktopInhibitor FreedesktopInhibitor::screenSaver(Bus& sessionBus) {
  return {sessionBus, services::kScreenSaver, "/org/freedesktop/ScreenSaver",
          "org.freedesktop.ScreenSaver"};
}

InhibitMechanism::Taken FreedesktopInhibitor::take(HoldKind /*kind*/, const std::string& reason,
                                                   Late late) {
  const std::string text = tidewell::cleaned(reason);
  return CookieInhibition::take(
      sessionBus_, {service_, path_, interface_, "Inhibit"},
      [&text](sd_bus_message* message) {
        return sd_bus_message_append(message, "ss", services::kDisplayName, text.c_str());
      },
      "UnInhibit", std::move(late));
}

}  // namespace platform

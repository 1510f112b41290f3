#include "Staylit/Desktop/Windowing.h"

#include "Platform/Linux/System/Modules.h"
#include "Staylit/Desktop/DesktopNotification.h"
#include "Staylit/Desktop/Display.h"
#include "Tidewell/Log.h"

namespace staylit {

Windowing::Windowing(platform::EventLoop& loop, platform::Bus& sessionBus)
    : loop_(loop), sessionBus_(sessionBus) {}

WindowKit* Windowing::kit() {
  if (!kit_) makeKit();
  return kit_.get();
}

void Windowing::makeKit() {
  if (!Display::isKnown()) Display::learnFromServiceManager(sessionBus_);
  if (!Display::isKnown()) {
    return cannotShow("there is no display", "Start Staylit within a desktop session.");
  }
  if (platform::moduleFile(kWindowsModule).empty()) {
    return cannotShow("its windows are not installed",
                      "Please install the package staylit-desktop.");
  }
  void* make = platform::loadFromModule(kWindowsModule, kMakeWindowKit);
  if (!make) {
    return cannotShow("its windows do not fit this system",
                      "Please install the package staylit-desktop anew.");
  }
  const DrivenLoop driven{loop_.descriptor(), [this] { loop_.pump(); },
                          [this] { return loop_.isStopping(); }};
  kit_.reset(reinterpret_cast<MakeWindowKit>(make)(driven));
  if (!kit_) {
    // Perhaps of a desktop that has ended since.
    Display::forget();
    return cannotShow("the display cannot be used", "See the log for the reason.");
  }
  loop_.handOver();
}

void Windowing::cannotShow(const std::string& why, const std::string& remedy) {
  const std::string text = "Staylit cannot show a window: " + why;
  if (lastLogged_ != why) tidewell::Log::error(text + ". " + remedy);
  lastLogged_ = why;
  showNotification(sessionBus_, {text, remedy});
}

}  // namespace staylit

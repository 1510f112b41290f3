#include "Staylit/Desktop/Display/WindowsModule.h"

#include "Staylit/Desktop/Windows/DisplayListeners.h"
#include "Staylit/Desktop/Windows/PlatformChoice.h"
#include "Staylit/Desktop/Windows/QtWindowKit.h"
#include "StaylitBuildIdentity.h"

extern "C" __attribute__((visibility("default"))) staylit::WindowKit* STAYLIT_OF_THIS_BUILD(
    staylitMakeWindowKit)(const staylit::DrivenLoop& loop, const std::string& platform,
                          std::shared_ptr<const tidewell::Translator> translator) {
  tidewell::Words::setTranslator(std::move(translator));
  auto kit = std::make_unique<staylit::windows::QtWindowKit>(loop, platform);
  // Somebody else may have taken the display's address since the trial.
  return staylit::windows::isServedByStrangers() ? nullptr : kit.release();
}

extern "C" __attribute__((visibility("default"))) void STAYLIT_OF_THIS_BUILD(staylitTryDisplay)(
    const std::function<void(const std::string&)>& found) {
  const auto platform = staylit::windows::choosePlatform();
  if (!platform) return;
  const staylit::windows::QtWindowKit kit({}, platform->name);
  if (!staylit::windows::isServedByStrangers()) found(platform->name);
}

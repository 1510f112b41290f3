#include "Staylit/Desktop/WindowsModule.h"

#include "Staylit/Desktop/Windows/QtWindowKit.h"
#include "Staylit/Desktop/Windows/UsablePlatform.h"

/// The module's one entry; see `MakeWindowKit`.
extern "C" __attribute__((visibility("default"))) staylit::WindowKit* staylitMakeWindowKit(
    const staylit::DrivenLoop& loop) {
  const auto platform = staylit::windows::usablePlatform();
  return platform ? new staylit::windows::QtWindowKit(loop, platform->name) : nullptr;
}

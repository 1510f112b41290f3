#include "Staylit/Desktop/Machine/MachineUserInterface.h"

#include "Staylit/Desktop/Status/StatusObject.h"
#include "Tidewell/Log.h"

namespace staylit {

MachineUserInterface::MachineUserInterface(platform::EventLoop& loop, platform::Bus& systemBus)
    : loop_(loop), bus_(systemBus) {}

std::unique_ptr<StatusItem> MachineUserInterface::makeStatusItem(MenuDelegate& /*delegate*/) {
  return nullptr;
}

std::unique_ptr<StatusService> MachineUserInterface::offerStatus(StatusReporter& reporter) {
  return std::make_unique<StatusObject>(bus_, reporter);
}

std::unique_ptr<ControlService> MachineUserInterface::offerControl(PauseControl& /*pause*/) {
  return nullptr;
}

std::unique_ptr<Window> MachineUserInterface::makeAppsWindow(const WindowStyle& /*style*/,
                                                             AppsView& /*view*/) {
  return nullptr;
}

std::unique_ptr<Window> MachineUserInterface::makeSettingsWindow(const WindowStyle& /*style*/,
                                                                 SettingsView& /*view*/) {
  return nullptr;
}

std::vector<Rect> MachineUserInterface::visibleFrames() {
  return {};
}

void MachineUserInterface::tell(const std::string& summary, const std::string& body) {
  tidewell::Log::error(summary + ": " + body);
}

void MachineUserInterface::terminate() {
  loop_.stop();
}

}  // namespace staylit

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Staylit/UserInterface.h"

namespace staylit {

/// What the program of a whole machine has of a user interface: it shows nothing, and everybody may
/// read its status on the system bus. What a user would be told goes to the log. Main thread only;
/// both arguments must outlive it.
class MachineUserInterface : public UserInterface {
 public:
  MachineUserInterface(platform::EventLoop& loop, platform::Bus& systemBus);

  std::unique_ptr<StatusItem> makeStatusItem(MenuDelegate& delegate) override;
  std::unique_ptr<StatusService> offerStatus(StatusReporter& reporter) override;
  std::unique_ptr<ControlService> offerControl(PauseControl& pause) override;
  std::unique_ptr<Window> makeAppsWindow(const WindowStyle& style, AppsView& view) override;
  std::unique_ptr<Window> makeSettingsWindow(const WindowStyle& style, SettingsView& view) override;
  std::vector<Rect> visibleFrames() override;
  void activate() override {}
  void tell(const std::string& summary, const std::string& body) override;
  void terminate() override;

 private:
  platform::EventLoop& loop_;
  platform::Bus& bus_;
};

}  // namespace staylit

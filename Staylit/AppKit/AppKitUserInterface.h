#pragma once

#include "Staylit/UserInterface.h"

namespace staylit {

/// The menu bar and the windows of macOS. Usable once the shared application has finished
/// launching; main thread only.
class AppKitUserInterface final : public UserInterface {
 public:
  std::unique_ptr<StatusItem> makeStatusItem(MenuDelegate& delegate) override;
  std::unique_ptr<StatusService> offerStatus(StatusReporter& reporter) override;
  std::unique_ptr<ControlService> offerControl(PauseControl& pause) override;
  std::unique_ptr<Window> makeAppsWindow(const WindowStyle& style, AppsView& view) override;
  std::unique_ptr<Window> makeSettingsWindow(const WindowStyle& style, SettingsView& view) override;
  std::vector<Rect> visibleFrames() override;
  void activate() override;
  void tell(const std::string& summary, const std::string& body) override;
  void terminate() override;
};

}  // namespace staylit

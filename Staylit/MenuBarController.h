#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Staylit/AppsView.h"
#include "Staylit/EngineStatus.h"
#include "Staylit/Menu.h"
#include "Staylit/Published.h"
#include "Staylit/SettingsView.h"
#include "Staylit/StaylitEngine.h"
#include "Staylit/UserInterface.h"
#include "Tidewell/Ports/Ports.h"
#include "Tidewell/TextMap.h"
#include "Tidewell/WeakReference.h"

namespace staylit {

/// The program's only permanent presence on the screen: a status item that follows the engine, its
/// menu, and the two windows that the menu opens.
///
/// Each window and its view are made when the window is first opened, and are then kept, whether
/// the window is hidden or shown. The status item follows the engine through the main loop. Main
/// thread only; all arguments must outlive the controller, and the ports must be the installed
/// ones.
class MenuBarController : public MenuDelegate {
 public:
  MenuBarController(StaylitEngine& engine, UserInterface& userInterface, tidewell::Ports& ports);
  ~MenuBarController() override;

  /// What the status item shows for a status.
  static StatusItemAppearance appearance(const EngineStatus& status);
  /// The status in one line, for the tool tip and the first line of the menu.
  static std::string summary(const EngineStatus& status);

  Menu menuNeedsUpdate() override;
  void perform(const MenuItem& item) override;

  /// Moves the item's application between the watched and the ignored ones, and lets the engine
  /// decide at once. Does nothing for an item without an application.
  void toggleApp(const MenuItem& item);
  void togglePause();
  /// Both bring their window to the front. They do nothing when the window cannot be made.
  void openApps();
  void openSettings();

 private:
  /// What the menu's rows and check marks depend on, without figures and without the order of what
  /// works.
  struct MenuRows {
    EngineStatus status;
    std::vector<std::string> busy;
    std::vector<std::string> asserting;
    tidewell::TextSet ignored;

    [[nodiscard]] bool areSameAs(const MenuRows& other) const;
  };

  [[nodiscard]] MenuRows menuRows(const EngineStatus& status);
  void followStatus();
  /// Renders `status` later, on the main loop.
  void postRender(const EngineStatus& status);
  void render(const EngineStatus& status);
  void makeAppsWindow();
  void makeSettingsWindow();
  void centerOnMainScreen(Window& window);
  void bringToFront(Window* window);

  StaylitEngine& engine_;
  UserInterface& userInterface_;
  tidewell::Ports& ports_;
  std::unique_ptr<StatusItem> statusItem_;  ///< Null where the system has no place for an item.
  std::optional<MenuRows> shownRows_;       ///< That the status item was told of last.
  std::unique_ptr<AppsView> appsView_;      ///< Made with its window, and destroyed after it.
  std::unique_ptr<Window> appsWindow_;      ///< Null until it is first opened.
  std::unique_ptr<SettingsView> settingsView_;
  std::unique_ptr<Window> settingsWindow_;
  Subscription statusSubscription_;
  tidewell::WeakReferenceSource<MenuBarController> self_{*this};  ///< For work that is posted.
};

}  // namespace staylit

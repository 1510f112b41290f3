#include "Staylit/Desktop/DesktopUserInterface.h"

#include "Staylit/Desktop/Control/ControlObject.h"
#include "Staylit/Desktop/Menu/DBusMenu.h"
#include "Staylit/Desktop/Session/ActivationToken.h"
#include "Staylit/Desktop/Session/DesktopNotification.h"
#include "Staylit/Desktop/Status/StatusObject.h"
#include "Staylit/Desktop/StatusItem/StatusNotifierItem.h"

namespace staylit {
namespace {

/// A status item that hands out references to the delegate of its menu. They are null once the item
/// is gone.
class ItemWithDelegate : public StatusNotifierItem {
 public:
  ItemWithDelegate(platform::EventLoop& loop, platform::Bus& bus, MenuDelegate& delegate)
      : StatusNotifierItem(loop, bus, delegate, StatusIcons::ofThisProgram()),
        delegate_(delegate) {}

  [[nodiscard]] tidewell::WeakReference<MenuDelegate> delegate() const { return delegate_.make(); }

 private:
  tidewell::WeakReferenceSource<MenuDelegate> delegate_;
};

}  // namespace

DesktopUserInterface::DesktopUserInterface(platform::EventLoop& loop, platform::Bus& sessionBus)
    : loop_(loop), sessionBus_(sessionBus), windowing_(loop, sessionBus) {}

std::unique_ptr<StatusItem> DesktopUserInterface::makeStatusItem(MenuDelegate& delegate) {
  auto item = std::make_unique<ItemWithDelegate>(loop_, sessionBus_, delegate);
  delegate_ = item->delegate();
  return item;
}

std::unique_ptr<StatusService> DesktopUserInterface::offerStatus(StatusReporter& reporter) {
  return std::make_unique<StatusObject>(sessionBus_, reporter);
}

std::unique_ptr<ControlService> DesktopUserInterface::offerControl(PauseControl& pause) {
  return std::make_unique<ControlObject>(loop_, sessionBus_, pause);
}

std::unique_ptr<Window> DesktopUserInterface::makeAppsWindow(const WindowStyle& style,
                                                             AppsView& view) {
  ActivationToken::use();
  WindowKit* kit = windowing_.kit([this] { choose(MenuItem::Action::openApps); });
  return kit ? kit->makeAppsWindow(style, view) : nullptr;
}

std::unique_ptr<Window> DesktopUserInterface::makeSettingsWindow(const WindowStyle& style,
                                                                 SettingsView& view) {
  ActivationToken::use();
  WindowKit* kit = windowing_.kit([this] { choose(MenuItem::Action::openSettings); });
  return kit ? kit->makeSettingsWindow(style, view) : nullptr;
}

std::vector<Rect> DesktopUserInterface::visibleFrames() {
  return windowKit() ? windowKit()->visibleFrames() : std::vector<Rect>();
}

void DesktopUserInterface::activate() {
  ActivationToken::use();
  if (windowKit()) windowKit()->activate();
}

void DesktopUserInterface::terminate() {
  loop_.stop();
}

void DesktopUserInterface::choose(MenuItem::Action action) {
  if (delegate_) staylit::choose(*delegate_, action);
}

void DesktopUserInterface::tell(const std::string& summary, const std::string& body) {
  showNotification(sessionBus_, {summary, body});
}

}  // namespace staylit

#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Staylit/AppsView.h"
#include "Staylit/SettingsView.h"
#include "Staylit/UserInterface.h"
#include "Tests/Fakes/CallLog.h"

namespace staylit {

/// A window system that shows nothing and remembers what it was asked to show.
class FakeUserInterface : public UserInterface {
 public:
  /// A window as it was made. It is kept after its end.
  struct ShownWindow {
    WindowStyle style;
    AppsView* appsView = nullptr;  ///< Exactly one of the two views is set while the window lives.
    SettingsView* settingsView = nullptr;
    std::optional<Point> origin;  ///< Absent while nobody has moved it.
    bool isCentered = false;
    bool isInFront = false;
    bool isAlive = true;

    /// A person clicks the button in the window's corner.
    void close() { isInFront = false; }
  };

  explicit FakeUserInterface(
      std::shared_ptr<tidewell::CallLog> calls = std::make_shared<tidewell::CallLog>())
      : calls_(std::move(calls)) {}

  std::unique_ptr<StatusItem> makeStatusItem(MenuDelegate& delegate) override {
    calls_->add("make status item");
    if (!hasPlaceForStatusItem) return nullptr;
    menu = &delegate;
    if (whileMakingStatusItem) whileMakingStatusItem(delegate);
    return std::make_unique<Item>(*this);
  }

  std::unique_ptr<StatusService> offerStatus(StatusReporter& asked) override {
    calls_->add("offer status");
    reporter = &asked;
    return std::make_unique<StatusService>();
  }

  std::unique_ptr<ControlService> offerControl(PauseControl& asked) override {
    pause = &asked;
    return std::make_unique<ControlService>();
  }

  std::unique_ptr<Window> makeAppsWindow(const WindowStyle& style, AppsView& view) override {
    calls_->add("make apps window");
    return makeWindow({style, &view, nullptr, {}});
  }

  std::unique_ptr<Window> makeSettingsWindow(const WindowStyle& style,
                                             SettingsView& view) override {
    calls_->add("make settings window");
    return makeWindow({style, nullptr, &view, {}});
  }

  std::vector<Rect> visibleFrames() override { return frames; }
  void activate() override { calls_->add("activate"); }
  void tell(const std::string& summary, const std::string& body) override {
    calls_->add("tell: " + summary);
    told.push_back(body);
  }
  void terminate() override { calls_->add("terminate"); }

  bool hasPlaceForStatusItem = true;
  bool canMakeWindows = true;
  std::vector<Rect> frames;
  std::function<void(MenuDelegate&)> whileMakingStatusItem;

  StatusReporter* reporter = nullptr;                 ///< Of the status that was offered last.
  PauseControl* pause = nullptr;                      ///< That was offered last.
  MenuDelegate* menu = nullptr;                       ///< Of the status item; null without one.
  std::vector<StatusItemAppearance> shown;            ///< By the status item, in order.
  int menuChanges = 0;                                ///< How often the item was told of one.
  std::vector<std::shared_ptr<ShownWindow>> windows;  ///< All windows, in the order of creation.
  std::vector<std::string> told;                      ///< The bodies of all messages, in order.

 private:
  class Item : public StatusItem {
   public:
    explicit Item(FakeUserInterface& owner) : owner_(owner) {}
    ~Item() override { owner_.menu = nullptr; }
    Item(const Item&) = delete;
    Item& operator=(const Item&) = delete;

    void show(const StatusItemAppearance& appearance) override {
      owner_.shown.push_back(appearance);
    }
    void menuChanged() override { ++owner_.menuChanges; }

   private:
    FakeUserInterface& owner_;
  };

  class Handle : public Window {
   public:
    Handle(std::shared_ptr<ShownWindow> window, std::shared_ptr<tidewell::CallLog> calls)
        : window_(std::move(window)), calls_(std::move(calls)) {}

    /// Reads the view once more, as a window may that is still drawn: the view must still be there.
    ~Handle() override {
      if (window_->appsView) calls_->add("end of window " + window_->appsView->search());
      if (window_->settingsView) {
        calls_->add("end of window " + window_->settingsView->form().front().title);
      }
      *window_ = {window_->style,      nullptr, nullptr, window_->origin,
                  window_->isCentered, false,   false};
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    void setFrameOrigin(Point origin) override {
      calls_->add("set frame origin");
      window_->origin = origin;
    }
    void center() override {
      calls_->add("center");
      window_->isCentered = true;
    }
    void makeKeyAndOrderFront() override {
      calls_->add("make key and order front");
      window_->isInFront = true;
    }

   private:
    std::shared_ptr<ShownWindow> window_;
    std::shared_ptr<tidewell::CallLog> calls_;
  };

  std::unique_ptr<Window> makeWindow(ShownWindow window) {
    if (!canMakeWindows) return nullptr;
    windows.push_back(std::make_shared<ShownWindow>(std::move(window)));
    return std::make_unique<Handle>(windows.back(), calls_);
  }

  std::shared_ptr<tidewell::CallLog> calls_;
};

}  // namespace staylit

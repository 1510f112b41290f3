#include "Staylit/AppDelegate.h"

#include "Staylit/Prefs.h"
#include "Tidewell/ClamshellController.h"
#include "Tidewell/Log.h"

namespace staylit {

AppDelegate::AppDelegate(tidewell::Ports& ports, UserInterface& userInterface)
    : ports_(ports), userInterface_(userInterface) {}

void AppDelegate::applicationDidFinishLaunching() {
  // What shows the engine goes before it, and is there before its first tick.
  terminalReporter_.reset();
  menuBar_.reset();
  engine_ = std::make_unique<StaylitEngine>(ports_);
  menuBar_ = std::make_unique<MenuBarController>(*engine_, userInterface_, ports_);
  if (ports_.console->outputIsTerminal()) {
    terminalReporter_ =
        std::make_unique<TerminalReporter>(*engine_, *ports_.console, *ports_.clock);
  }
  resumeLidClosed();
  engine_->start();
  tidewell::Log::info("Staylit started");
}

void AppDelegate::resumeLidClosed() {
  if (!Prefs::shared().defaults().boolean(keys::allowLidClosed)) return;
  if (tidewell::ClamshellController::resume()) return;
  // Asked for in an earlier run: nobody looks at the Settings window, which shows failures, now.
  userInterface_.tell("With its lid closed the computer will sleep",
                      "\"Work with the lid closed\" could not be switched on again.");
}

void AppDelegate::applicationWillTerminate() {
  if (!engine_) return;
  engine_->stopTimer();
  engine_->releaseHold();
}

void AppDelegate::applicationShouldHandleReopen() {
  if (menuBar_) menuBar_->openApps();
}

}  // namespace staylit

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
  if (Prefs::shared().defaults().boolean(keys::allowLidClosed)) {
    tidewell::ClamshellController::resume();
  }
  engine_->start();
  tidewell::Log::info("Staylit started");
}

void AppDelegate::applicationWillTerminate() {
  if (!engine_) return;
  engine_->stopTimer();
  engine_->releaseHold();
}

}  // namespace staylit

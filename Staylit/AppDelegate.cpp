#include "Staylit/AppDelegate.h"

#include "Tidewell/Log.h"

namespace staylit {

AppDelegate::AppDelegate(tidewell::Ports& ports) : ports_(ports) {}

void AppDelegate::applicationDidFinishLaunching() {
  terminalReporter_.reset();
  engine_ = std::make_unique<StaylitEngine>(ports_);
  // What shows the engine is there before its first tick.
  if (ports_.console->outputIsTerminal()) {
    terminalReporter_ =
        std::make_unique<TerminalReporter>(*engine_, *ports_.console, *ports_.clock);
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

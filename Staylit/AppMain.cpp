#include "Staylit/AppMain.h"

#include <algorithm>

#include "Staylit/AppDelegate.h"
#include "Staylit/Diagnostics.h"
#include "Staylit/Prefs.h"
#include "Tidewell/ClamshellController.h"
#include "Tidewell/Log.h"

namespace staylit {

AppMain::AppMain(tidewell::Ports& ports, Application& application, UserInterface& userInterface)
    : ports_(ports), application_(application), userInterface_(userInterface) {}

int AppMain::run(const std::vector<std::string>& arguments) {
  const tidewell::InstalledPorts installed(ports_);
  tidewell::Log::setSubsystem("com.staylit.app");
  tidewell::ClamshellController::setOwnerProcessName("Staylit");
  tidewell::ClamshellController::setWatchdogLabel("com.staylit.clamshell-watchdog");
  if (std::ranges::find(arguments, "--diagnose") != arguments.end()) {
    Prefs::shared().defaults().setBoolean(keys::verbose, true);
    Diagnostics::run(ports_);
  } else {
    AppDelegate delegate(ports_, userInterface_);
    application_.run(delegate);
  }
  ports_.defaults->finishWriting();
  if (ports_.historyLines) ports_.historyLines->finishWriting();
  return 0;
}

}  // namespace staylit

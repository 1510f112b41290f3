#pragma once

#include <memory>

#include "Staylit/Application.h"
#include "Staylit/StaylitEngine.h"
#include "Staylit/TerminalReporter.h"
#include "Tidewell/Ports/Ports.h"

namespace staylit {

/// Owns what lives as long as the running application: the engine, and what shows it. Main thread
/// only; the ports must outlive it, and be the installed ones.
class AppDelegate : public ApplicationDelegate {
 public:
  explicit AppDelegate(tidewell::Ports& ports);

  void applicationDidFinishLaunching() override;

  /// Stops the ticks and gives every hold back. Nothing else: the lid-closed setting stays as it
  /// is. Does nothing before launching has finished.
  void applicationWillTerminate() override;

  /// Null before launching has finished.
  StaylitEngine* engine() { return engine_.get(); }

 private:
  tidewell::Ports& ports_;
  std::unique_ptr<StaylitEngine> engine_;
  std::unique_ptr<TerminalReporter> terminalReporter_;
};

}  // namespace staylit

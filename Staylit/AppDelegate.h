#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Staylit/Application.h"
#include "Staylit/History/HistoryRecorder.h"
#include "Staylit/History/StoredHistoryLog.h"
#include "Staylit/HoldWatch.h"
#include "Staylit/MenuBarController.h"
#include "Staylit/PauseControl.h"
#include "Staylit/Replay/TapeRecorder.h"
#include "Staylit/Replay/TapeRing.h"
#include "Staylit/SettingsRemarks.h"
#include "Staylit/StatusReporter.h"
#include "Staylit/StaylitEngine.h"
#include "Staylit/TerminalReporter.h"
#include "Staylit/UserInterface.h"
#include "Tidewell/Ports/Ports.h"

namespace staylit {

/// Owns the objects that live as long as the running application: the engine and what shows it.
/// Main thread only; both arguments must outlive it, and the ports must be the installed ones.
class AppDelegate : public ApplicationDelegate {
 public:
  AppDelegate(tidewell::Ports& ports, UserInterface& userInterface);

  void applicationDidFinishLaunching() override;

  /// Stops the ticks and releases every hold. The lid-closed setting stays as it is. Does nothing
  /// before launching has finished.
  void applicationWillTerminate() override;

  /// Shows Choose Apps. Does nothing before launching has finished.
  void applicationShouldHandleReopen() override;

  /// Both are null before launching has finished.
  StaylitEngine* engine() { return engine_.get(); }
  MenuBarController* menuBar() { return menuBar_.get(); }

 private:
  void startRing();
  void recordHistory();
  void resumeLidClosed();
  void tellAboutLid(const std::string& why);
  void tellTerminalThatNothingCanBeHeld();
  void tellThatNothingHolds();
  void tellOfSettings(const std::vector<std::string>& remarks);

  tidewell::Ports& ports_;
  UserInterface& userInterface_;
  std::unique_ptr<StaylitEngine> engine_;
  std::unique_ptr<TapeRing> ring_;                    ///< Null unless the last day is kept.
  std::unique_ptr<TapeRecorder> ringRecorder_;        ///< Null unless the last day is kept.
  std::unique_ptr<StoredHistoryLog> historyLog_;      ///< Null where no history is kept.
  std::unique_ptr<HistoryRecorder> historyRecorder_;  ///< Null where no history is kept.
  std::unique_ptr<StatusReporter> statusReporter_;
  std::unique_ptr<StatusService> statusService_;  ///< Null where nobody can ask.
  std::unique_ptr<PauseControl> pauseControl_;
  std::unique_ptr<ControlService> controlService_;  ///< Null where nobody can.
  std::unique_ptr<MenuBarController> menuBar_;
  std::unique_ptr<TerminalReporter> terminalReporter_;
  std::unique_ptr<HoldWatch> holdWatch_;
  std::unique_ptr<SettingsRemarks> settingsRemarks_;
  std::shared_ptr<void> lidChanges_;
};

}  // namespace staylit

#include "Staylit/AppDelegate.h"

#include <algorithm>
#include <span>

#include "Staylit/Prefs.h"
#include "Staylit/StatusTexts.h"
#include "Staylit/Version.h"
#include "Tidewell/ClamshellController.h"
#include "Tidewell/Log.h"
#include "Tidewell/Words.h"

namespace staylit {

using tidewell::Words;

AppDelegate::AppDelegate(tidewell::Ports& ports, UserInterface& userInterface)
    : ports_(ports), userInterface_(userInterface) {}

void AppDelegate::applicationDidFinishLaunching() {
  // The objects that show the engine are destroyed before the engine, and made before its first
  // tick.
  settingsRemarks_.reset();
  holdWatch_.reset();
  terminalReporter_.reset();
  menuBar_.reset();
  controlService_.reset();
  pauseControl_.reset();
  statusService_.reset();
  statusReporter_.reset();
  ringRecorder_.reset();
  ring_.reset();
  historyRecorder_.reset();
  engine_ = std::make_unique<StaylitEngine>(ports_);
  recordHistory();
  statusReporter_ = std::make_unique<StatusReporter>(*engine_, ports_);
  statusService_ = userInterface_.offerStatus(*statusReporter_);
  pauseControl_ = std::make_unique<PauseControl>(*engine_, ports_);
  statusReporter_->tellEndOf(*pauseControl_);
  controlService_ = userInterface_.offerControl(*pauseControl_);
  menuBar_ = std::make_unique<MenuBarController>(*engine_, userInterface_, ports_);
  if (ports_.console->outputIsTerminal()) {
    terminalReporter_ =
        std::make_unique<TerminalReporter>(*engine_, *ports_.console, *ports_.clock);
  }
  holdWatch_ = std::make_unique<HoldWatch>(*engine_, *ports_.powerManagement,
                                           [this] { tellThatNothingHolds(); });
  settingsRemarks_ = std::make_unique<SettingsRemarks>(
      *engine_, [this](const std::vector<std::string>& remarks) { tellOfSettings(remarks); });
  startRing();
  resumeLidClosed();
  engine_->start();
  if (holdWatch_->isInVain()) tellTerminalThatNothingCanBeHeld();
  tidewell::Log::info("Staylit started");
}

void AppDelegate::startRing() {
  if (!ports_.ringFolder || !Prefs::shared().defaults().boolean(keys::historyRing)) return;
  ring_ = std::make_unique<TapeRing>(ports_.ringFolder, *ports_.serialQueues);
  ringRecorder_ =
      std::make_unique<TapeRecorder>(*engine_, ports_, *ring_, TapeRecorder::Names::asTheyAre,
                                     std::string("Staylit ") + programVersion());
}

void AppDelegate::recordHistory() {
  if (!ports_.historyLines) return;
  historyLog_ = std::make_unique<StoredHistoryLog>(*ports_.historyLines);
  historyRecorder_ = std::make_unique<HistoryRecorder>(*engine_, ports_, *historyLog_);
}

void AppDelegate::resumeLidClosed() {
  const auto isWanted = [] { return Prefs::shared().defaults().boolean(keys::allowLidClosed); };
  if (ports_.lidSwitch) {
    lidChanges_ = ports_.lidSwitch->observe([this, isWanted](bool holds) {
      if (!holds && isWanted()) {
        tellAboutLid(Words::shown().phrase("\"Work with the lid closed\" is not in effect."));
      }
    });
  }
  if (!isWanted() || tidewell::ClamshellController::resume()) return;
  // The setting comes from an earlier run, so nobody looks at the Settings window, which would show
  // the failure.
  tellAboutLid(
      Words::shown().phrase("\"Work with the lid closed\" could not be switched on again."));
}

void AppDelegate::tellAboutLid(const std::string& why) {
  // TRANSLATORS: the title of a notification.
  userInterface_.tell(Words::shown().phrase("With its lid closed the computer will sleep"), why);
}

/// The person who looks at a terminal sees "releasing in 120s" there, and should see at once that
/// there is nothing to release. What has no known reason waits, as the notification does: a service
/// may be about to start.
void AppDelegate::tellTerminalThatNothingCanBeHeld() {
  if (!terminalReporter_) return;
  const std::string why = ports_.powerManagement->whyNotGranted();
  if (why.empty()) return;
  terminalReporter_->tell("Nothing can be held here: " + why +
                          ". staylit --doctor says what to do");
}

void AppDelegate::tellThatNothingHolds() {
  const Words& words = Words::shown();
  const std::string why = words.knownPhrase(ports_.powerManagement->whyNotGranted());
  const std::string body =
      // TRANSLATORS: a notification. A hold is what keeps the computer awake.
      why.empty() ? words.phrase("No service of the system grants Staylit's hold.")
                  : words.phrase("No service of the system grants Staylit's hold: {reason}.",
                                 {{"reason", why}});
  // TRANSLATORS: the title of a notification.
  userInterface_.tell(words.phrase("The computer may fall asleep during the work"), body);
  if (terminalReporter_) {
    terminalReporter_->tell(kNothingGrantsTheHold);
  }
}

void AppDelegate::tellOfSettings(const std::vector<std::string>& remarks) {
  if (terminalReporter_) {
    for (const std::string& remark : remarks)
      terminalReporter_->tell(remark);
  }
  // A notification has little room, and the log has all.
  constexpr std::size_t kMostLines = 3;
  std::string body;
  for (const std::string& remark : std::span(remarks).first(std::min(kMostLines, remarks.size())))
    body += remark + ". ";
  const Words& words = Words::shown();
  if (remarks.size() > kMostLines) {
    body += words.phraseFor(
                static_cast<std::int64_t>(remarks.size() - kMostLines),
                // TRANSLATORS: follows sentences about mistakes in the file of the settings.
                "And {count} more.", "And {count} more.") +
            " ";
  }
  // TRANSLATORS: "them" are remarks about mistakes in the file of the settings.
  body += words.phrase("The log and staylit --doctor have them all.");
  // TRANSLATORS: the title of a notification.
  userInterface_.tell(words.phrase("Some settings do not count as they are written"), body);
}

void AppDelegate::applicationWillTerminate() {
  if (!engine_) return;
  engine_->stopTimer();
  engine_->releaseHold();
  if (ringRecorder_) ringRecorder_->finish();
  if (historyRecorder_) historyRecorder_->stop();
}

void AppDelegate::applicationShouldHandleReopen() {
  if (menuBar_) menuBar_->openApps();
}

}  // namespace staylit

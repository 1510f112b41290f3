#include "Staylit/Replay/RecordSession.h"

#include <utility>

#include "Staylit/Replay/AccountedHolds.h"
#include "Staylit/Replay/ReplayCommand.h"
#include "Staylit/Replay/SilentLog.h"
#include "Staylit/TimeTexts.h"

namespace staylit {

RecordSession::RecordSession(tidewell::Ports& ports, std::unique_ptr<tidewell::PrivateFile> file,
                             TapeRecorder::Names names, const std::string& program,
                             std::function<void()> stopped)
    : ports_(ports),
      file_(std::move(file)),
      engine_(withoutHolds(ports)),
      recorder_(std::make_unique<TapeRecorder>(engine_, ports, file_, names, program)),
      afterTick_(engine_.status().observe(
          [this, stopped = std::move(stopped)](const EngineStatus& /*next*/) {
            if (recorder_->figures().isStopped) ports_.mainLoop->async(stopped);
          })) {}

void RecordSession::start(const std::string& fileName) {
  ports_.console->printLine("Recording into " + fileName + " until Ctrl-C. Nothing is held.");
  ports_.console->printLine(
      "The file gets, every two seconds, the name of each program and what it uses of the "
      "processor, "
      "the disk and the network; who asks to stay awake; the power; and the settings. It gets no "
      "paths, no arguments and no content.");
  engine_.start();
}

int RecordSession::finish() {
  engine_.stopTimer();
  recorder_->finish();
  const TapeRecorder::Figures figures = recorder_->figures();
  if (!file_.error().empty()) {
    ports_.console->writeError("staylit: the recording ended early: " + file_.error() + "\n");
  }
  ports_.console->printLine("Recorded " + lengthOfTime(figures.length) + ": " +
                            std::to_string(figures.ticks) + " ticks in " +
                            std::to_string(figures.bytes) + " bytes.");
  return file_.error().empty() ? ReplayCommand::done : ReplayCommand::trouble;
}

tidewell::Ports& RecordSession::withoutHolds(tidewell::Ports& ports) {
  ports.powerManagement = std::make_shared<AccountedHolds>("recording");
  ports.log = std::make_shared<SilentLog>();
  return ports;
}

}  // namespace staylit

#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Staylit/Published.h"
#include "Staylit/Replay/TapeFile.h"
#include "Staylit/Replay/TapeRecorder.h"
#include "Staylit/StaylitEngine.h"
#include "Tidewell/Ports/Ports.h"

namespace staylit {

/// Records to a file what an engine sees and decides that holds nothing. Main thread only; the
/// ports must be the installed ones, and outlive it.
class RecordSession {
 public:
  /// `program` is the name and version of this program. From the main loop, `stopped` is called
  /// when the file takes nothing more.
  RecordSession(tidewell::Ports& ports, std::unique_ptr<tidewell::PrivateFile> file,
                TapeRecorder::Names names, const std::string& program,
                std::function<void()> stopped);

  /// Says on the console what is recorded, and begins.
  void start(const std::string& fileName);

  /// Ends the recording and says what the file has. Returns the exit status of the process.
  int finish();

 private:
  static tidewell::Ports& withoutHolds(tidewell::Ports& ports);

  tidewell::Ports& ports_;
  TapeFile file_;
  StaylitEngine engine_;
  std::unique_ptr<TapeRecorder> recorder_;
  Subscription afterTick_;
};

}  // namespace staylit

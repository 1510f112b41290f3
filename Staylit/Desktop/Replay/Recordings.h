#pragma once

#include <memory>
#include <string>

#include "Staylit/History/HistoryTexts.h"
#include "Staylit/Replay/ReplayRequest.h"
#include "Tidewell/Ports/Console.h"
#include "Tidewell/Ports/PrivateFolder.h"

namespace staylit {

/// Does what `--record` and `--replay` ask for, on Linux. Main thread only, before any other ports
/// exist. Each returns the exit status of the process.
class Recordings {
 public:
  explicit Recordings(tidewell::Console& console) : console_(console) {}

  int replay(const ReplayRequest& request, HistoryTexts::Style style);

  /// Returns when SIGINT, SIGTERM or SIGHUP ends the recording, or the file takes nothing more.
  int record(const RecordRequest& request);

 private:
  static int recordInto(std::unique_ptr<tidewell::PrivateFile> file, const RecordRequest& request);

  tidewell::Console& console_;
};

}  // namespace staylit

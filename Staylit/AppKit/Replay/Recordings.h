#pragma once

#include <memory>
#include <string>

#include "Staylit/Replay/ReplayRequest.h"
#include "Tidewell/Ports/Ports.h"
#include "Tidewell/Ports/PrivateFolder.h"

namespace staylit {

/// Does what `--record` and `--replay` ask for, on macOS, with the ports of the system. Main thread
/// only, before any ports are installed. Each returns the exit status of the process.
class Recordings {
 public:
  explicit Recordings(tidewell::Ports& ports) : ports_(ports) {}

  int replay(const ReplayRequest& request);

  /// Returns when SIGINT, SIGTERM or SIGHUP ends the recording, or the file takes nothing more.
  int record(const RecordRequest& request);

 private:
  int recordInto(std::unique_ptr<tidewell::PrivateFile> file, const RecordRequest& request);

  tidewell::Ports& ports_;
};

}  // namespace staylit

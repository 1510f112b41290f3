#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Staylit/History/HistoryTexts.h"
#include "Staylit/Replay/ReplayRequest.h"
#include "Tidewell/Ports/Console.h"
#include "Tidewell/Ports/PrivateFolder.h"
#include "Tidewell/Ports/Text.h"

namespace staylit {

/// Does what `--replay` asks for, and the part of `--record` that copies the ring. Main thread
/// only, before any ports are installed.
class ReplayCommand {
 public:
  /// What the process ends with.
  enum Exit {
    done = 0,
    differs = 1,  ///< The replay decides otherwise than the recording did.
    trouble = 2,
  };

  /// `ring` is the folder of the ring; empty where there is none.
  ReplayCommand(tidewell::Console& console, std::shared_ptr<tidewell::Text> text, std::string ring);

  Exit replay(const ReplayRequest& request, HistoryTexts::Style style);
  Exit copyRing(const RecordRequest& request, std::unique_ptr<tidewell::PrivateFile> file);

 private:
  std::optional<std::vector<std::string>> read(const std::vector<std::string>& paths);
  std::optional<std::vector<std::string>> ringFiles();
  Exit fail(const std::string& why);

  tidewell::Console& console_;
  std::shared_ptr<tidewell::Text> text_;
  std::string ring_;
};

}  // namespace staylit

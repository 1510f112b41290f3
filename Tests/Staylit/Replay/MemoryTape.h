#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Staylit/Replay/TapeFormat.h"
#include "Staylit/Replay/TapeWriter.h"

namespace staylit {

/// Keeps a tape in memory, file by file.
class MemoryTape : public TapeOutput {
 public:
  Answer append(std::string piece) override {
    if (piece.starts_with(tapeFormat::kOpening)) files.emplace_back();
    files.back() += piece;
    return std::exchange(next, Answer::goOn);
  }

  /// What the next piece is answered with.
  Answer next = Answer::goOn;
  std::vector<std::string> files;
};

}  // namespace staylit

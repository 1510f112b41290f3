#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Staylit/Replay/MadeUpNames.h"
#include "Staylit/Replay/Tape.h"
#include "Staylit/Replay/TapeReader.h"
#include "Staylit/Replay/TapeWriter.h"
#include "Tidewell/Ports/Text.h"
#include "Tidewell/TextMap.h"

namespace staylit {

/// Copies the files of a tape into one, and replaces names on the way where that is wanted. Main
/// thread only; the output, `text` and `names` must outlive it.
class TapeCopy {
 public:
  /// Names stay as they are if `names` is null.
  TapeCopy(TapeOutput& output, tidewell::Text& text, MadeUpNames* names);

  /// Copies what can be read of a file. One file after the other.
  void copy(std::string_view file);
  void finish() { writer_.flush(); }

  [[nodiscard]] std::uint64_t ticks() const { return ticks_; }
  [[nodiscard]] std::uint64_t bytes() const { return writer_.bytesWritten(); }

 private:
  void write(TapeReader& reader, const TapeEvent& event);
  void writeTick(TapeReader& reader, const TapedTick& tick);
  void takeNames(const TapeReader& reader);
  [[nodiscard]] std::vector<std::string> replaced(const std::vector<std::string>& names);
  [[nodiscard]] EngineStatus replacedIn(const EngineStatus& outcome,
                                        const std::vector<std::string>& asserting);

  TapeWriter writer_;
  tidewell::Text& text_;
  MadeUpNames* names_;
  TapedInputs inputs_;  ///< With the names that the copy has.
  std::uint32_t version_ = 0;
  tidewell::TextMap<std::string> shownNames_;  ///< What replaces the names in what was decided.
  TapeBegan began_{};
  std::uint64_t ticks_ = 0;
};

}  // namespace staylit

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Staylit/Replay/Tape.h"
#include "Staylit/Replay/TapeBytes.h"

namespace staylit {

/// Reads the frames of a tape, which anybody may have written. One thread at a time.
///
/// After any damage nothing more is read. All texts that it gives are safe to show
/// (`tidewell::cleaned`), moments never go back, and sums and differences of times cannot overflow.
class TapeDecoder {
 public:
  /// The frames that are read next; those before must have been read. Must outlive the reading.
  void feed(std::string_view frames) { in_ = TapeBytesReader(frames); }

  /// The next event. Absent at the end of the frames and after damage.
  std::optional<TapeEvent> next();
  [[nodiscard]] bool isDamaged() const { return isDamaged_; }

  /// What the last tick saw.
  [[nodiscard]] const TapedInputs& inputs() const { return inputs_; }
  /// Changes whenever the places of `inputs` have got new names.
  [[nodiscard]] std::uint32_t version() const { return version_; }

 private:
  std::optional<TapeEvent> read();
  TapeEvent readBegan();
  TapeEvent readTick();
  std::optional<tidewell::Moment> readMoment();
  std::optional<tidewell::WallTime> readWallTime();
  std::optional<tidewell::Moment> readMomentAbout(tidewell::Moment at);
  std::string readText();
  std::vector<std::string> readTexts();
  void readPower();
  void readSettings();
  tidewell::PropertyValue readSetting();
  void readNames();
  void readPresence();
  void readCounters();
  void readOutcome();
  TapedApplication* applicationAt(std::uint64_t place);

  TapeBytesReader in_;
  bool isDamaged_ = false;
  bool hasBegun_ = false;
  std::vector<std::string> texts_;
  tidewell::Moment last_;
  std::chrono::nanoseconds lastInterval_{};
  TapedInputs inputs_;
  EngineStatus outcome_{EngineStatus::Idle()};
  std::uint32_t version_ = 1;
};

}  // namespace staylit

#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Staylit/Replay/Tape.h"
#include "Staylit/Replay/TapeEncoder.h"

namespace staylit {

/// Where the pieces of a tape go. Main thread only.
class TapeOutput {
 public:
  enum class Answer {
    goOn,       ///< The next piece may follow.
    beginAnew,  ///< The next piece must begin another file.
    stop,       ///< Nothing more is taken.
  };

  virtual ~TapeOutput() = default;

  /// `piece` is a whole piece, so that a file stays readable when the program ends after it. A
  /// piece that begins with the opening of a tape begins a file.
  virtual Answer append(std::string piece) = 0;
};

/// Writes the events of a tape. It gathers them for a minute at most before it hands them over, and
/// loses what it has when it is destroyed. Main thread only; the output must outlive it.
class TapeWriter {
 public:
  explicit TapeWriter(TapeOutput& output) : output_(output) {}

  /// Whether the next event must be a beginning: at first, when the output wants another file, and
  /// when the texts on the tape have become too many.
  [[nodiscard]] bool needsBeginning() const { return needsBeginning_; }
  /// Whether the output takes nothing more. Events are then dropped.
  [[nodiscard]] bool isStopped() const { return isStopped_; }

  void begin(const TapeBegan& began);
  void add(const TapedTick& tick, const TapedInputs& inputs);
  void add(const TapeMark& mark);
  void add(const TapeClockSet& clockSet);

  /// Hands over what was gathered.
  void flush();

  /// The bytes that were handed over.
  [[nodiscard]] std::uint64_t bytesWritten() const { return bytesWritten_; }

 private:
  void noteTime(tidewell::Moment at);

  TapeOutput& output_;
  TapeEncoder encoder_;
  bool needsBeginning_ = true;
  bool needsOpening_ = true;
  bool isStopped_ = false;
  std::optional<tidewell::Moment> oldest_;  ///< Of the events that were gathered.
  std::uint64_t bytesWritten_ = 0;
};

}  // namespace staylit

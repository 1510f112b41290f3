#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Staylit/History/HistoryTimeline.h"
#include "Staylit/Replay/Tape.h"
#include "Staylit/Replay/TapeReader.h"
#include "Tidewell/Ports/Text.h"

namespace staylit {

/// A time in which neither what was held nor what a replay holds changed.
struct ReplayStretch {
  /// What one of the two made of this time.
  struct Side {
    bool isHeld = false;
    /// What a hold is for; after the work, what it was for. Sorted; empty in a hold that no work
    /// came before.
    std::vector<std::string> names;
    friend bool operator==(const Side&, const Side&) = default;
  };

  std::chrono::nanoseconds length{};
  Side was;
  Side would;
};

/// What a tick of the recording became in the replay, where the two differ.
struct ReplayedDifference {
  tidewell::WallTime at{};
  std::string was;
  std::string would;
};

struct ReplayResult {
  /// What the replay did, as the program itself keeps it. All times are by the wall clock of the
  /// recording, of which `now` is the end. It is "running" if the last run goes on there.
  History history;
  /// What of the history counts: from the first tick, or the end of the warm-up, to the last event.
  /// The warm-up of a later run is part of it.
  tidewell::WallTime from{};
  tidewell::WallTime to{};
  std::vector<ReplayStretch> stretches;  ///< For comparison; one after the other.
  std::uint64_t ticks = 0;
  std::uint64_t differingTicks = 0;
  std::vector<ReplayedDifference> differences;  ///< The first ones.
  /// The time at the beginning that only brings the engine to the state of the recorded one.
  std::chrono::nanoseconds warmUp{};
  std::uint64_t runs = 0;
  std::string program;    ///< What recorded, by name and version; the last one.
  bool isMadeUp = false;  ///< Whether names were replaced.
  bool hasUnreadableRest = false;
  tidewell::PropertyDictionary settings;  ///< As they were at the last tick.
};

/// Runs the engine over a tape in virtual time, with other settings where some are given.
///
/// The engine, the activity monitor, the catalogue and the recorder of the history are those of the
/// program, so that the same tape gives the same decisions. While this object lives, its ports are
/// the installed ones. Main thread only. Nothing here fails: a tape that cannot be read gives
/// nothing.
class Replay {
 public:
  /// `settings` count in place of those on the tape.
  Replay(std::shared_ptr<tidewell::Text> text, tidewell::PropertyDictionary settings);
  ~Replay();
  Replay(const Replay&) = delete;
  Replay& operator=(const Replay&) = delete;

  /// Plays all that a file has, which may go on where the file before ended.
  void play(std::string_view file);

  /// What was played. Call it once, after all files.
  ReplayResult finish();

 private:
  struct Run;
  class Events;
  enum class Ending { inOrder, unknown };

  void happen(const TapeBegan& began);
  void happen(const TapedTick& tick);
  void happen(const TapeMark& mark);
  void happen(const TapeClockSet& clockSet);
  void decide();
  void compare(const TapedTick& tick);
  void advance(tidewell::Moment to);
  void endRun(Ending ending);
  void noteRange();
  [[nodiscard]] bool isWarmingUp(tidewell::Moment at) const;
  [[nodiscard]] tidewell::WallTime wallTimeOf(tidewell::Moment moment) const;

  std::shared_ptr<tidewell::Text> text_;
  tidewell::PropertyDictionary settings_;
  ReplayResult result_;
  bool hasRange_ = false;  ///< Whether the result has one.
  std::unique_ptr<TapeReader> reader_;
  std::uint32_t version_ = 0;  ///< Of the names that the ports have.
  std::uint32_t readersVersion_ = 0;
  std::unique_ptr<Run> run_;
};

}  // namespace staylit

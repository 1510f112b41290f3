#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Staylit/Replay/Tape.h"
#include "Staylit/Replay/TapeBytes.h"
#include "Tidewell/TextMap.h"

namespace staylit {

/// Turns events into the frames of a tape, and tells only what changed since the event before. One
/// thread at a time.
class TapeEncoder {
 public:
  /// Forgets everything: what follows can be read without what was encoded before.
  void begin(const TapeBegan& began);
  void add(const TapedTick& tick, const TapedInputs& inputs);
  void add(const TapeMark& mark);
  void add(const TapeClockSet& clockSet);

  /// How many texts the frames since the beginning refer to.
  [[nodiscard]] std::size_t texts() const { return texts_.size(); }
  /// How many bytes of frames there are.
  [[nodiscard]] std::size_t size() const { return out_.bytes().size(); }
  /// Hands over the frames since the last call.
  [[nodiscard]] std::string take() { return out_.take(); }

 private:
  void putMoment(tidewell::Moment at);
  void putText(const std::string& text);
  void putTexts(const std::vector<std::string>& texts);
  void putPower(const tidewell::PowerState& power);
  void putSetting(const std::string& key, const tidewell::PropertyValue& value);
  void putSettings(const tidewell::PropertyDictionary& settings);
  void putNames(const std::vector<TapedApplication>& applications);
  void putPresence(const std::vector<TapedApplication>& applications);
  void putCounters(const std::vector<TapedApplication>& applications);
  void putOutcome(const EngineStatus& outcome);
  [[nodiscard]] std::uint64_t partsOf(const TapedTick& tick, const TapedInputs& inputs) const;
  void findChanges(const std::vector<TapedApplication>& applications);

  TapeBytesWriter out_;
  tidewell::TextMap<std::uint64_t> texts_;
  tidewell::Moment last_;
  std::chrono::nanoseconds lastInterval_{};
  TapedInputs told_;
  EngineStatus toldOutcome_{EngineStatus::Idle()};
  // The places of applications with a change of each kind at the present tick.
  std::vector<std::size_t> renamed_;
  std::vector<std::size_t> cameOrWent_;
  std::vector<std::size_t> counted_;
};

}  // namespace staylit

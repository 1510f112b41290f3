#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Staylit/Published.h"
#include "Staylit/Replay/MadeUpNames.h"
#include "Staylit/Replay/Tape.h"
#include "Staylit/Replay/TapeWriter.h"
#include "Staylit/Replay/TapedApplications.h"
#include "Staylit/StaylitEngine.h"
#include "Tidewell/ActivityMonitor.h"
#include "Tidewell/Ports/Ports.h"
#include "Tidewell/WeakReference.h"

namespace staylit {

/// Keeps on a tape what an engine is told and what it decides.
///
/// Make it before the engine starts, and destroy it before the engine. Main thread only. The ports
/// must be the installed ones; they and the output must outlive it. When it is destroyed, it
/// finishes. Nothing fails here: when the output takes nothing
/// more, nothing more is recorded.
class TapeRecorder : private tidewell::TickListener {
 public:
  enum class Names { asTheyAre, madeUp };

  TapeRecorder(StaylitEngine& engine, tidewell::Ports& ports, TapeOutput& output, Names names,
               std::string program);
  ~TapeRecorder() override;
  TapeRecorder(const TapeRecorder&) = delete;
  TapeRecorder& operator=(const TapeRecorder&) = delete;

  struct Figures {
    std::uint64_t ticks = 0;
    std::uint64_t bytes = 0;  ///< Those that were handed to the output.
    tidewell::Seconds length{};
    bool isStopped = false;  ///< The output took nothing more.
  };
  [[nodiscard]] Figures figures() const;

  /// Hands over what was gathered.
  void flush() { writer_.flush(); }

  /// Writes the end of the run, and hands over what was gathered. Nothing is recorded after that.
  void finish();

 private:
  void ticked(const tidewell::TickInputs& inputs) override;
  void look(const EngineStatus& next);
  void finishTick(const EngineStatus& next);
  void add(TapeMark::Kind kind);
  void beginIfNecessary(tidewell::Moment at);
  void noteWallTime(tidewell::Moment at);
  void noteQuiet(const EngineStatus& next, TapedTick& tick);
  [[nodiscard]] EngineStatus asOnTape(const EngineStatus& status);
  [[nodiscard]] std::string nameOf(const tidewell::BusyApp& app) const;
  [[nodiscard]] std::vector<std::string> namesOf(const std::vector<std::string>& asserting);
  [[nodiscard]] tidewell::PropertyDictionary settings();
  void observeSystemSleep();
  [[nodiscard]] bool isRecording() const;

  StaylitEngine& engine_;
  tidewell::Ports& ports_;
  TapeWriter writer_;
  std::string program_;
  std::optional<MadeUpNames> madeUp_;
  TapedApplications applications_;
  TapedInputs inputs_;
  tidewell::PropertyDictionary registered_;
  std::uint64_t run_;
  bool isFirst_ = true;
  std::optional<TapedTick> pending_;  ///< A tick that was sampled and not yet decided.
  std::optional<tidewell::Moment> quietSince_;
  std::chrono::nanoseconds wallOffset_{};  ///< From moments to the wall time, as the tape tells.
  bool isFinished_ = false;
  std::optional<tidewell::Moment> first_;
  tidewell::Moment last_;
  std::uint64_t ticks_ = 0;
  Subscription status_;
  tidewell::WeakReferenceSource<TapeRecorder> self_{*this};  ///< For the system's notifications.
};

}  // namespace staylit

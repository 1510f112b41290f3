#pragma once

#include <sys/types.h>
#include <systemd/sd-event.h>

#include <functional>
#include <memory>
#include <string>

#include "Platform/Linux/Loop/EventLoop.h"
#include "Platform/Linux/Loop/EventSource.h"
#include "Platform/Posix/Files/Descriptor.h"

namespace staylit {

/// Tries the display in a process of its own, so that the loop goes on meanwhile.
///
/// A display may accept a connection and never answer. The libraries that speak with it then wait
/// for ever, or end the process. So the program starts itself once more for the trial, and that
/// process does all that the windows do at their start. Main thread only; the loop must outlive it.
class DisplayTrial {
 public:
  struct Verdict {
    enum class Kind {
      usable,
      refused,         ///< No display can be used; the reason stands on standard error.
      silent,          ///< The display has not answered in time.
      ofAnotherBuild,  ///< The windows that are installed belong to another build.
      notLoadable,     ///< The windows cannot be loaded.
    };
    Kind kind = Kind::refused;
    std::string platform;  ///< For a usable display: the platform to make the windows on.
    std::string reason;    ///< Why the windows cannot be loaded. Nobody has logged it yet.
  };

  /// The program that the trial's process runs: this program's own file, even if another file has
  /// taken its place meanwhile.
  static constexpr const char* kOwnProgram = "/proc/self/exe";
  static constexpr const char* kOption = "--try-display";
  /// This is long, because a very busy machine needs its time to load the windows, and nobody waits
  /// for the trial.
  static constexpr tidewell::Seconds kPatience{20};

  /// `done` runs once, from the loop, and may destroy this object. A usable display stays connected
  /// until this object is destroyed: some servers end or start afresh when their last client
  /// leaves.
  DisplayTrial(platform::EventLoop& loop, std::function<void(const Verdict&)> done,
               const std::string& program = kOwnProgram, tidewell::Seconds patience = kPatience);
  /// Ends the process of the trial.
  ~DisplayTrial();
  DisplayTrial(const DisplayTrial&) = delete;
  DisplayTrial& operator=(const DisplayTrial&) = delete;

  /// The whole work of the trial's process, for `main`. Returns the exit status.
  static int runInOwnProcess();

 private:
  static int outputIsReadable(sd_event_source* source, int descriptor, unsigned events, void* data);
  bool startProcess(const std::string& program);
  void finish(const Verdict& verdict);

  platform::EventLoop& loop_;
  std::function<void(const Verdict&)> done_;
  pid_t process_ = -1;
  platform::Descriptor output_;  ///< Of the process, to read the outcome from.
  platform::Descriptor input_;   ///< Of the process, which ends when it is closed.
  platform::EventSource source_;
  std::unique_ptr<tidewell::RepeatingTimer> patienceTimer_;
  std::string received_;
};

}  // namespace staylit

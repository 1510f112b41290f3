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

/// Tries the display in a process of its own, while the loop goes on.
///
/// A display may accept a connection and never answer. The libraries that speak with it then wait
/// for ever, or end the process. So the program starts itself once more for the trial, and that
/// process does all that the windows do at their start. Main thread only; the loop must outlive it.
class DisplayTrial {
 public:
  struct Verdict {
    enum class Kind {
      usable,
      refused,         ///< There is none that could be used; why, stands on standard error.
      silent,          ///< It has not answered in time.
      ofAnotherBuild,  ///< The windows that are installed are not this program's.
      notLoadable,     ///< The windows cannot be loaded.
    };
    Kind kind = Kind::refused;
    std::string platform;  ///< For a usable one: what the windows are to be made with.
    std::string reason;    ///< Why the windows cannot be loaded; the process has not logged it.
  };

  /// How the process of the trial is started. It runs the program's own file, even if that was
  /// replaced meanwhile.
  static constexpr const char* kOwnProgram = "/proc/self/exe";
  static constexpr const char* kOption = "--try-display";
  /// The limit is long because a very busy machine needs its time to load the windows, and nobody
  /// waits for the trial.
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

  /// What the process of the trial does instead of all else. Returns its exit status.
  static int answer();

 private:
  static int readable(sd_event_source* source, int descriptor, unsigned events, void* data);
  bool start(const std::string& program);
  void finish(const Verdict& verdict);

  platform::EventLoop& loop_;
  std::function<void(const Verdict&)> done_;
  pid_t process_ = -1;
  platform::Descriptor output_;
  platform::Descriptor input_;  ///< Closing it ends the process.
  platform::EventSource source_;
  std::unique_ptr<tidewell::RepeatingTimer> limit_;
  std::string text_;
};

}  // namespace staylit

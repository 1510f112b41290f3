#pragma once

namespace staylit {

/// The application calls its delegate at these points of its life. Main thread only.
class ApplicationDelegate {
 public:
  virtual ~ApplicationDelegate() = default;
  virtual void applicationDidFinishLaunching() = 0;
  virtual void applicationWillTerminate() = 0;
  /// The program was started once more while it runs. The running program is to show itself.
  virtual void applicationShouldHandleReopen() = 0;
};

/// The running program as the system sees it: it has an event loop, starts, and is asked to end.
/// Main thread only.
class Application {
 public:
  virtual ~Application() = default;

  /// Runs the event loop: tells `delegate` when launching has finished and when the program is
  /// about to terminate, and returns (or ends the process) after that.
  virtual void run(ApplicationDelegate& delegate) = 0;
};

}  // namespace staylit

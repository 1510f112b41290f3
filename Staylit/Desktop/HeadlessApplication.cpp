#include "Staylit/Desktop/HeadlessApplication.h"

namespace staylit {

HeadlessApplication::HeadlessApplication(platform::EventLoop& loop) : loop_(loop) {}

void HeadlessApplication::run(ApplicationDelegate& delegate) {
  // Before any other thread exists, so that the signals come to the loop alone.
  loop_.watchTerminationSignals([this] { loop_.stop(); });
  delegate.applicationDidFinishLaunching();
  loop_.run();
  delegate.applicationWillTerminate();
}

}  // namespace staylit

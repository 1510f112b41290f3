#pragma once

#include <functional>

namespace platform {

/// Runs `work` later on the main thread, when the main loop waits in its default mode: not while a
/// menu is open or another modal window is shown. Main thread only.
///
/// For work that runs the loop itself, as a modal window does. Posted to the main queue, such work
/// would be under way there as long as the window is open, and nothing else that is posted to the
/// queue would run meanwhile: no tick, no icon.
void performModal(std::function<void()> work);

}  // namespace platform

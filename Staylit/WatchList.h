#pragma once

#include <string>

namespace staylit {

/// Decides which applications are watched: all that the stored list of ignored applications does
/// not name. Main thread only.
class WatchList {
 public:
  WatchList() = delete;

  /// Takes the application `id` (a key as in `BusyApp::id`) off that list, or puts it on. Counts
  /// from the engine's next tick on.
  static void setWatched(const std::string& id, bool watched);
};

}  // namespace staylit

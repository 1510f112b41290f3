#pragma once

#include <string>

namespace staylit {

/// Moves applications between the watched and the ignored ones. An application is watched unless
/// the stored list of ignored applications names it. Main thread only.
class WatchList {
 public:
  WatchList() = delete;

  /// `id` is an application key, as in `BusyApp::id`. Takes effect at the engine's next tick.
  static void setWatched(const std::string& id, bool watched);
};

}  // namespace staylit

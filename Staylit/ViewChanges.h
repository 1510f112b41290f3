#pragma once

#include <cstdint>
#include <functional>

#include "Staylit/Published.h"
#include "Staylit/StaylitEngine.h"
#include "Tidewell/Ports/MainLoop.h"
#include "Tidewell/WeakReference.h"

namespace staylit {

/// Tells whoever shows a view that something shown there may have changed: what the engine
/// publishes, or what the view itself did.
///
/// The engine tells of a change before it happens, and of four in one tick; here an observer is
/// told once for all of them, from the main loop, when they have happened. Owned by the view;
/// nobody is told once it is gone. Main thread only; both arguments must outlive it.
class ViewChanges {
 public:
  ViewChanges(StaylitEngine& engine, tidewell::MainLoop& mainLoop);

  /// The view changed something that is shown.
  void tell();

  /// `changed` is called until the subscription is dropped, which it may do itself.
  [[nodiscard]] Subscription observe(std::function<void()> changed);

 private:
  class Observer;

  StaylitEngine& engine_;
  tidewell::MainLoop& mainLoop_;
  Published<std::int64_t> own_{0};                     ///< Counts what the view did.
  tidewell::WeakReferences<ViewChanges> self_{*this};  ///< For what is posted.
};

}  // namespace staylit

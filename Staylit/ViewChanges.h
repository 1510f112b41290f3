#pragma once

#include <cstdint>
#include <functional>

#include "Staylit/Published.h"
#include "Staylit/StaylitEngine.h"
#include "Tidewell/Ports/MainLoop.h"
#include "Tidewell/WeakReference.h"

namespace staylit {

/// Tells whoever shows a view that something in it may have changed: a value that the engine
/// publishes, or something that the view itself did.
///
/// The engine tells of a change before it happens, and of four changes in one tick. Here an
/// observer is told once for all of them, from the main loop, when they have happened. The view
/// owns this object, and nobody is told once it is gone. Main thread only; both arguments must
/// outlive it.
class ViewChanges {
 public:
  ViewChanges(StaylitEngine& engine, tidewell::MainLoop& mainLoop);

  /// The view changed something that is shown.
  void tell();

  /// `changed` is called until the subscription is dropped. The call itself may drop it.
  [[nodiscard]] Subscription observe(std::function<void()> changed);

 private:
  class Observer;

  StaylitEngine& engine_;
  tidewell::MainLoop& mainLoop_;
  Published<std::int64_t> own_{0};                     ///< Counts what the view did.
  tidewell::WeakReferences<ViewChanges> self_{*this};  ///< For what is posted.
};

}  // namespace staylit

#pragma once

#include <cstdint>
#include <functional>

#include "Staylit/Published.h"
#include "Staylit/StaylitEngine.h"
#include "Tidewell/Ports/MainLoop.h"
#include "Tidewell/WeakReference.h"

namespace staylit {

/// Tells whoever shows a view that something in it may have changed: a value that the engine
/// publishes, the list of ignored applications (while the engine is paused it publishes nothing),
/// or a value of the view itself.
///
/// The engine tells of each change before it happens, and of four changes in one tick. This class
/// tells an observer once for all changes in one pass of the main loop, when the new values can be
/// read. The view owns it, and it tells nobody once it is gone. Main thread only; both arguments
/// must outlive it.
class ViewChanges {
 public:
  ViewChanges(StaylitEngine& engine, tidewell::MainLoop& mainLoop);

  /// The view changed something that is shown. Observers are told later, from the main loop.
  void viewChanged();

  /// `changed` is called until the subscription is dropped. The call itself may drop it.
  [[nodiscard]] Subscription observe(std::function<void()> changed);

 private:
  class Observer;

  StaylitEngine& engine_;
  tidewell::MainLoop& mainLoop_;
  Published<std::int64_t> viewChanges_{0};  ///< How often the view changed something.
  tidewell::WeakReferenceSource<ViewChanges> self_{*this};  ///< For work that is posted.
};

}  // namespace staylit

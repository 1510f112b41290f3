#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "Tidewell/Ports/RunningApplications.h"

namespace platform {

/// Gives a running application the same object on each look, as long as it runs: whoever has seen
/// the object knows the application again without comparing texts, and its properties are read
/// once.
///
/// `Handle` is what the system knows an application by. An object is kept under its process
/// identifier, and for the same handle only, because another application may have the number by
/// then. Main thread only.
template <typename Handle>
class KeptApplications {
 public:
  using Application = std::shared_ptr<const tidewell::RunningApplication>;

  struct Calls {
    std::function<std::int32_t(const Handle&)> processIdentifier;
    std::function<Application(const Handle&)> make;
    std::function<bool(const Handle&, const Handle&)> isSame;
    /// Whether its properties will not change any more; asked once for each object. They may while
    /// an application is launched, so that one is made anew on each look.
    std::function<bool(const tidewell::RunningApplication&)> isSettled;
  };

  explicit KeptApplications(Calls calls) : calls_(std::move(calls)) {}

  /// What runs now, in that order; forgets what does not.
  std::vector<Application> update(const std::vector<Handle>& running) {
    const std::map<std::int32_t, Kept> former = std::exchange(kept_, {});
    std::vector<Application> applications;
    applications.reserve(running.size());
    for (const Handle& handle : running)
      applications.push_back(objectOf(handle, former));
    return applications;
  }

 private:
  struct Kept {
    Handle handle;
    Application application;
  };

  Application objectOf(const Handle& handle, const std::map<std::int32_t, Kept>& former) {
    const std::int32_t pid = calls_.processIdentifier(handle);
    const auto found = former.find(pid);
    const bool isKnown = found != former.end() && calls_.isSame(found->second.handle, handle);
    Application application = isKnown ? found->second.application : calls_.make(handle);
    if (isKnown || calls_.isSettled(*application)) {
      kept_.insert_or_assign(pid, Kept{handle, application});
    }
    return application;
  }

  Calls calls_;
  std::map<std::int32_t, Kept> kept_;
};

}  // namespace platform

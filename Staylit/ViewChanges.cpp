#include "Staylit/ViewChanges.h"

#include <array>
#include <memory>
#include <utility>

#include "Staylit/Prefs.h"

namespace staylit {

/// One observer. Only its subscription keeps it alive.
class ViewChanges::Observer : public std::enable_shared_from_this<Observer> {
 public:
  Observer(tidewell::MainLoop& mainLoop, tidewell::WeakReference<ViewChanges> view,
           std::function<void()> changed)
      : mainLoop_(mainLoop), view_(std::move(view)), changed_(std::move(changed)) {}

  void follow(StaylitEngine& engine, Published<std::int64_t>& viewChanges) {
    const auto post = [this](const auto&) { postOnce(); };
    subscriptions_ = {engine.status().observe(post),
                      engine.busyApps().observe(post),
                      engine.assertingApps().observe(post),
                      engine.powerState().observe(post),
                      Prefs::shared().ignoredAppsChanges().observe(post),
                      viewChanges.observe(post)};
  }

 private:
  void postOnce() {
    if (isPosted_) return;
    isPosted_ = true;
    mainLoop_.async([weak = weak_from_this()] {
      if (const auto observer = weak.lock()) observer->tell();
    });
  }

  void tell() {
    // The flag is cleared before the call, so that the observer is also told of a change that
    // happens during the call.
    isPosted_ = false;
    if (view_) changed_();
  }

  tidewell::MainLoop& mainLoop_;
  tidewell::WeakReference<ViewChanges> view_;
  std::function<void()> changed_;
  bool isPosted_ = false;
  std::array<Subscription, 6> subscriptions_;
};

ViewChanges::ViewChanges(StaylitEngine& engine, tidewell::MainLoop& mainLoop)
    : engine_(engine), mainLoop_(mainLoop) {}

void ViewChanges::viewChanged() {
  viewChanges_.set(viewChanges_.get() + 1);
}

Subscription ViewChanges::observe(std::function<void()> changed) {
  auto observer = std::make_shared<Observer>(mainLoop_, self_.make(), std::move(changed));
  observer->follow(engine_, viewChanges_);
  return Subscription(std::move(observer));
}

}  // namespace staylit

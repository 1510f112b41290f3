#include "Staylit/Desktop/Menu/MenuHosts.h"

#include <utility>

#include "Staylit/StaylitEngine.h"

namespace staylit {
namespace {

/// For five minutes, which is far longer than anybody reads a menu.
constexpr int kTrackedTicks = 150;
/// For half a minute.
constexpr int kGuessedTicks = 15;
/// For ten seconds. Few people look at a menu for longer. A layout that is kept back after the menu
/// was closed is missing when the menu is shown again, which then has the height of the old one.
constexpr int kKeptTicks = 5;

}  // namespace

MenuHosts::MenuHosts(platform::EventLoop& loop, std::function<void()> refresh)
    : loop_(loop), refresh_(std::move(refresh)) {}

MenuHosts::~MenuHosts() {
  forget();
}

void MenuHosts::opened(sd_bus_message* message) {
  follow(sd_bus_message_get_bus(message));
  if (!track_ || sd_bus_track_add_sender(track_, message) < 0) return;
  trackedTicks_ = kTrackedTicks;
  guessedTicks_ = 0;
  keptTicks_ = 0;
  startClock();
}

void MenuHosts::closed(sd_bus_message* message) {
  if (!track_ || sd_bus_message_get_bus(message) != bus_) return;
  sd_bus_track_remove_sender(track_, message);
  stopClockIfIdle();
}

void MenuHosts::mayHaveOpened() {
  if (isTracking()) return;
  guessedTicks_ = kGuessedTicks;
  keptTicks_ = kKeptTicks;
  startClock();
}

void MenuHosts::surelyClosed() {
  guessedTicks_ = 0;
  keptTicks_ = 0;
  stopClockIfIdle();
}

bool MenuHosts::mustKeepLayout() const {
  return keptTicks_ > 0 && !isTracking();
}

void MenuHosts::startClock() {
  if (timer_) return;
  timer_ = loop_.scheduleRepeating(StaylitEngine::kInterval, [this] { tick(); });
  timer_->setTolerance(StaylitEngine::kTolerance);
}

void MenuHosts::stopClockIfIdle() {
  if (!isTracking() && guessedTicks_ == 0) timer_.reset();
}

void MenuHosts::tick() {
  if (guessedTicks_ > 0) --guessedTicks_;
  if (keptTicks_ > 0) --keptTicks_;
  if (track_ && --trackedTicks_ <= 0) forget();
  stopClockIfIdle();
  refresh_();
}

void MenuHosts::follow(sd_bus* bus) {
  if (bus == bus_) return;
  forget();
  if (sd_bus_track_new(bus, &track_, allLeft, this) >= 0) bus_ = bus;
}

void MenuHosts::forget() {
  sd_bus_track_unref(std::exchange(track_, nullptr));
  bus_ = nullptr;
}

int MenuHosts::allLeft(sd_bus_track* /*track*/, void* data) {
  // This callback comes late: somebody may have opened the menu in between.
  static_cast<MenuHosts*>(data)->stopClockIfIdle();
  // After a return of 0 the bus would call again at once, and for ever, instead of reading its
  // messages.
  return 1;
}

}  // namespace staylit

#include "Staylit/Desktop/MenuHosts.h"

#include <utility>

namespace staylit {
namespace {

constexpr tidewell::Seconds kTick{2};
/// Five minutes, far longer than anybody reads a menu.
constexpr int kMostTicks = 150;

}  // namespace

MenuHosts::MenuHosts(platform::EventLoop& loop, std::function<void()> refresh)
    : loop_(loop), refresh_(std::move(refresh)) {}

MenuHosts::~MenuHosts() {
  forget();
}

void MenuHosts::opened(sd_bus_message* message) {
  follow(sd_bus_message_get_bus(message));
  ticksLeft_ = kMostTicks;
  if (!track_ || sd_bus_track_add_sender(track_, message) < 0 || timer_) return;
  timer_ = loop_.scheduleRepeating(kTick, [this] { tick(); });
  timer_->setTolerance(kTick / 4);
}

void MenuHosts::closed(sd_bus_message* message) {
  if (!track_ || sd_bus_message_get_bus(message) != bus_) return;
  sd_bus_track_remove_sender(track_, message);
  if (sd_bus_track_count(track_) == 0) timer_.reset();
}

void MenuHosts::tick() {
  refresh_();
  if (--ticksLeft_ <= 0) forget();
}

void MenuHosts::follow(sd_bus* bus) {
  if (bus == bus_) return;
  forget();
  if (sd_bus_track_new(bus, &track_, allLeft, this) >= 0) bus_ = bus;
}

void MenuHosts::forget() {
  sd_bus_track_unref(std::exchange(track_, nullptr));
  bus_ = nullptr;
  timer_.reset();
}

int MenuHosts::allLeft(sd_bus_track* track, void* data) {
  auto& self = *static_cast<MenuHosts*>(data);
  // Told late: somebody may have opened the menu in between.
  if (sd_bus_track_count(track) == 0) self.timer_.reset();
  return 0;
}

}  // namespace staylit

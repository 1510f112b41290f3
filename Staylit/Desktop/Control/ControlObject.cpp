#include "Staylit/Desktop/Control/ControlObject.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

namespace staylit {
namespace {

/// More than the longest pause that the command line takes; what is longer lasts as long as this.
constexpr std::int64_t kBeyondEveryPause = 400LL * 86'400;

std::optional<tidewell::Seconds> lengthOf(std::int64_t seconds) {
  if (seconds <= 0) return std::nullopt;
  return tidewell::Seconds(static_cast<double>(std::min(seconds, kBeyondEveryPause)));
}

/// In seconds since 1970; 0 where nothing ends the pause by itself.
std::int64_t endOf(const PauseControl& pause) {
  const auto until = pause.until();
  if (!until) return 0;
  return std::chrono::floor<std::chrono::seconds>(*until).time_since_epoch().count();
}

}  // namespace

const sd_bus_vtable ControlObject::kTable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_NAMES("Pause", "x", SD_BUS_PARAM(seconds), "x", SD_BUS_PARAM(until),
                             pauseFor, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("Resume", "", , "b", SD_BUS_PARAM(was_paused), resume,
                             SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("TogglePause", "", , "b", SD_BUS_PARAM(is_paused), togglePause,
                             SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

ControlObject::ControlObject(platform::EventLoop& loop, platform::Bus& bus, PauseControl& pause)
    : loop_(loop),
      pause_(pause),
      object_(bus, {ControlInterface::kPath, ControlInterface::kName}, kTable, this) {}

int ControlObject::answerLater(sd_bus_message* call, const Answer& answer) {
  // Work that is posted is copied, and a message has one owner.
  const auto kept = std::make_shared<platform::BusMessage>(sd_bus_message_ref(call));
  loop_.async([object = self_.make(), kept, answer] {
    if (object) answer(kept->get());
  });
  constexpr int kIsTaken = 1;
  return kIsTaken;
}

int ControlObject::pauseFor(sd_bus_message* call, void* data, sd_bus_error* /*error*/) {
  std::int64_t seconds = 0;
  if (const int result = sd_bus_message_read(call, "x", &seconds); result < 0) return result;
  auto& self = *static_cast<ControlObject*>(data);
  return self.answerLater(call, [&pause = self.pause_, seconds](sd_bus_message* asked) {
    pause.pause(lengthOf(seconds));
    return sd_bus_reply_method_return(asked, "x", endOf(pause));
  });
}

int ControlObject::resume(sd_bus_message* call, void* data, sd_bus_error* /*error*/) {
  auto& self = *static_cast<ControlObject*>(data);
  return self.answerLater(call, [&pause = self.pause_](sd_bus_message* asked) {
    const bool wasPaused = pause.resume();
    return sd_bus_reply_method_return(asked, "b", wasPaused ? 1 : 0);
  });
}

int ControlObject::togglePause(sd_bus_message* call, void* data, sd_bus_error* /*error*/) {
  auto& self = *static_cast<ControlObject*>(data);
  return self.answerLater(call, [&pause = self.pause_](sd_bus_message* asked) {
    if (!pause.resume()) pause.pause(std::nullopt);
    return sd_bus_reply_method_return(asked, "b", pause.isPaused() ? 1 : 0);
  });
}

}  // namespace staylit

#pragma once

#include <systemd/sd-bus.h>

#include <utility>

namespace platform {

/// The one owner of a connection, which it closes without waiting. Move-only; the thread of the
/// connection's loop only. None of the connection's own handlers may destroy it.
class BusConnection {
 public:
  BusConnection() = default;
  /// Takes over the reference.
  explicit BusConnection(sd_bus* bus) : bus_(bus) {}
  ~BusConnection() { sd_bus_close_unref(bus_); }
  BusConnection(BusConnection&& other) noexcept : bus_(std::exchange(other.bus_, nullptr)) {}
  BusConnection& operator=(BusConnection&& other) noexcept {
    if (this != &other) {
      sd_bus_close_unref(bus_);
      bus_ = std::exchange(other.bus_, nullptr);
    }
    return *this;
  }

  [[nodiscard]] sd_bus* get() const { return bus_; }
  explicit operator bool() const { return bus_ != nullptr; }

 private:
  sd_bus* bus_ = nullptr;
};

}  // namespace platform

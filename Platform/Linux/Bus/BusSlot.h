#pragma once

#include <systemd/sd-bus.h>

#include <utility>

namespace platform {

/// The one owner of a registration with a bus connection (a match, a pending call, an object),
/// which ends with it. Move-only; the bus's thread only. The registration's own handler may destroy
/// it.
class BusSlot {
 public:
  BusSlot() = default;
  /// Takes over the reference.
  explicit BusSlot(sd_bus_slot* slot) : slot_(slot) {}
  ~BusSlot() { reset(); }
  BusSlot(BusSlot&& other) noexcept : slot_(std::exchange(other.slot_, nullptr)) {}
  BusSlot& operator=(BusSlot&& other) noexcept {
    if (this != &other) {
      reset();
      slot_ = std::exchange(other.slot_, nullptr);
    }
    return *this;
  }

  explicit operator bool() const { return slot_ != nullptr; }
  void reset() { sd_bus_slot_unref(std::exchange(slot_, nullptr)); }

 private:
  sd_bus_slot* slot_ = nullptr;
};

}  // namespace platform

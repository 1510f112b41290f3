#pragma once

#include <systemd/sd-bus.h>

#include <utility>

namespace platform {

/// The one owner of a reference to a bus message. Move-only; the bus's thread only. Texts and
/// descriptors that are read from the message live as long as the message.
class BusMessage {
 public:
  BusMessage() = default;
  /// Takes over the reference.
  explicit BusMessage(sd_bus_message* message) : message_(message) {}
  ~BusMessage() { sd_bus_message_unref(message_); }
  BusMessage(BusMessage&& other) noexcept : message_(std::exchange(other.message_, nullptr)) {}
  BusMessage& operator=(BusMessage&& other) noexcept {
    if (this != &other) {
      sd_bus_message_unref(message_);
      message_ = std::exchange(other.message_, nullptr);
    }
    return *this;
  }

  [[nodiscard]] sd_bus_message* get() const { return message_; }
  explicit operator bool() const { return message_ != nullptr; }

 private:
  sd_bus_message* message_ = nullptr;
};

}  // namespace platform

#pragma once

#include <systemd/sd-bus.h>

#include <memory>
#include <optional>
#include <string_view>

namespace platform {

/// Something that listens on a bus for as long as it exists, over every connection that the bus
/// makes. Made by `Bus`; whoever asked for it owns it and ends the listening by dropping it, which
/// its own callback may do as well.
class BusListener : public std::enable_shared_from_this<BusListener> {
 public:
  BusListener() = default;
  virtual ~BusListener() = default;
  BusListener(const BusListener&) = delete;
  BusListener& operator=(const BusListener&) = delete;

  /// A connection stands: register with it. Must not wait, nor call anybody back.
  virtual void connected(sd_bus* bus) = 0;
  /// The connection is gone: drop what was registered. Must not call anybody back.
  virtual void disconnected() = 0;

  /// Whether `name` has an owner, as far as this listener knows.
  [[nodiscard]] virtual std::optional<bool> isOwned(std::string_view /*name*/) const {
    return std::nullopt;
  }
  /// Told what was found out by asking.
  virtual void learn(std::string_view /*name*/, bool /*owned*/) {}
};

using BusListening = std::shared_ptr<BusListener>;

}  // namespace platform

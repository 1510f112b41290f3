#pragma once

#include <systemd/sd-bus.h>

#include <memory>
#include <optional>
#include <string_view>

namespace platform {

/// Something that listens on a bus as long as it exists, over every connection that the bus makes.
/// `Bus` makes it. Whoever asked for it owns it and ends the listening by dropping it, which its
/// own callback may do as well.
class BusListener : public std::enable_shared_from_this<BusListener> {
 public:
  BusListener() = default;
  virtual ~BusListener() = default;
  BusListener(const BusListener&) = delete;
  BusListener& operator=(const BusListener&) = delete;

  /// The connection is there: register with it. The call must not wait, nor call anybody back.
  virtual void connected(sd_bus* bus) = 0;
  /// The connection is gone: drop what was registered. The call must not call anybody back.
  virtual void disconnected() = 0;

  /// Whether `name` has an owner, as far as this listener knows.
  [[nodiscard]] virtual std::optional<bool> isOwned(std::string_view /*name*/) const {
    return std::nullopt;
  }
  /// Tells the listener what the bus answered when it was asked.
  virtual void learn(std::string_view /*name*/, bool /*owned*/) {}
};

using BusListening = std::shared_ptr<BusListener>;

}  // namespace platform

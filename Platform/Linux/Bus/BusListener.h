#pragma once

#include <systemd/sd-bus.h>

#include <memory>
#include <optional>
#include <string_view>

namespace platform {

/// Listens on a bus, over every connection that the bus makes, for as long as the listener exists.
/// `Bus` makes a listener for an owner. The owner ends the listening by dropping the listener, and
/// may do so in the listener's own callback.
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

  /// Whether `name` has an owner; absent when this listener does not know.
  [[nodiscard]] virtual std::optional<bool> isOwned(std::string_view /*name*/) const {
    return std::nullopt;
  }
  /// Tells the listener what the bus answered to a question about `name`.
  virtual void learn(std::string_view /*name*/, bool /*owned*/) {}

 protected:
  /// Handles the reply to a match. Without a handler of its own, a refused match would end the
  /// whole connection.
  static int ignoreRefusal(sd_bus_message* /*reply*/, void* /*data*/, sd_bus_error* /*error*/) {
    return 0;
  }
};

using BusListening = std::shared_ptr<BusListener>;

}  // namespace platform

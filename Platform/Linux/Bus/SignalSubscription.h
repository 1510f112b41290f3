#pragma once

#include <functional>
#include <memory>

#include "Platform/Linux/Bus/BusHandles.h"
#include "Platform/Linux/Bus/BusListener.h"
#include "Platform/Linux/Bus/BusNames.h"
#include "Platform/Linux/Bus/NameWatch.h"

namespace platform {

/// Receives one signal, and only from the present owner of the sender's name. See `Bus::subscribe`.
class SignalSubscription : public BusListener {
 public:
  using Callback = std::function<void(sd_bus_message*)>;

  /// `sender` watches the name from which the signal is to come. The bus tells `sender` of a
  /// connection before it tells this subscription, so that no signal can come before its sender is
  /// known.
  SignalSubscription(BusSignal signal, std::shared_ptr<const NameWatch> sender, Callback callback);

  void connected(sd_bus* bus) override;
  void disconnected() override;

 private:
  static int received(sd_bus_message* message, void* data, sd_bus_error* error);

  BusSignal signal_;
  std::shared_ptr<const NameWatch> sender_;
  Callback callback_;
  BusSlot match_;
};

}  // namespace platform

#pragma once

#include <functional>
#include <string>

#include "Platform/Linux/Bus/BusListener.h"
#include "Platform/Linux/Bus/BusSignal.h"
#include "Platform/Linux/Bus/BusSlot.h"

namespace platform {

/// Hears one signal. See `Bus::subscribe`.
class SignalSubscription : public BusListener {
 public:
  using Callback = std::function<void(sd_bus_message*)>;

  SignalSubscription(BusSignal signal, Callback callback);

  void connected(sd_bus* bus) override;
  void disconnected() override;

 private:
  static int received(sd_bus_message* message, void* data, sd_bus_error* error);

  BusSignal signal_;
  Callback callback_;
  BusSlot match_;
};

}  // namespace platform

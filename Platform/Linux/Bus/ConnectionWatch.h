#pragma once

#include <functional>

#include "Platform/Linux/Bus/BusListener.h"
#include "Tidewell/Ports/MainLoop.h"

namespace platform {

/// Is told when connections are made and lost. See `Bus::watchConnection`.
class ConnectionWatch : public BusListener {
 public:
  using Callback = std::function<void(bool connected)>;

  /// `loop` must outlive the watch.
  ConnectionWatch(tidewell::MainLoop& loop, Callback callback);

  void connected(sd_bus* bus) override;
  void disconnected() override;

 private:
  void tell(bool connected);

  tidewell::MainLoop& loop_;
  Callback callback_;
};

}  // namespace platform

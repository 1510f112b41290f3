#pragma once

#include <memory>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Tidewell/Ports/Ports.h"

namespace platform {

/// Does the same as `makePorts`, with a loop that the caller runs and with buses that the caller
/// shares. The buses are found through the environment, as in every D-Bus program, and connected at
/// their first use.
std::unique_ptr<tidewell::Ports> makeLinuxPorts(std::shared_ptr<EventLoop> loop,
                                                std::shared_ptr<Buses> buses);
/// The same on buses of its own.
std::unique_ptr<tidewell::Ports> makeLinuxPorts(std::shared_ptr<EventLoop> loop);

}  // namespace platform

#pragma once

#include <memory>

#include "Platform/Linux/Bus/Buses.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Tidewell/Ports/Ports.h"

namespace platform {

/// As `makePorts`, on a loop that the caller runs and on buses that it shares. The buses are found
/// by the environment, as by every D-Bus program, and connected when they are first needed.
std::unique_ptr<tidewell::Ports> makeLinuxPorts(std::shared_ptr<EventLoop> loop,
                                                std::shared_ptr<Buses> buses);
/// The same on buses of its own.
std::unique_ptr<tidewell::Ports> makeLinuxPorts(std::shared_ptr<EventLoop> loop);

}  // namespace platform

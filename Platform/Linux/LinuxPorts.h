#pragma once

#include <filesystem>
#include <memory>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Tidewell/Ports/Ports.h"

namespace platform {

/// Makes all ports on Linux, as `makePorts` does, but with a loop that the caller runs and buses
/// that the caller uses as well. The buses find their addresses in the environment, and connect at
/// their first use.
std::unique_ptr<tidewell::Ports> makeLinuxPorts(std::shared_ptr<EventLoop> loop,
                                                std::shared_ptr<Buses> buses);
/// Does the same with another file of settings than the user's.
std::unique_ptr<tidewell::Ports> makeLinuxPorts(std::shared_ptr<EventLoop> loop,
                                                std::shared_ptr<Buses> buses,
                                                std::filesystem::path settings);
/// Does the same with buses of its own.
std::unique_ptr<tidewell::Ports> makeLinuxPorts(std::shared_ptr<EventLoop> loop);

/// Makes the port for text alone.
[[nodiscard]] std::shared_ptr<tidewell::Text> makeLinuxText();

}  // namespace platform

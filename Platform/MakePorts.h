#pragma once

#include <memory>

#include "Tidewell/Ports/Ports.h"

namespace platform {

/// Makes every port of the system that the program was built for. Never fails: what the machine
/// lacks is replaced by a substitute that answers as the port's header says.
std::unique_ptr<tidewell::Ports> makePorts();

}  // namespace platform

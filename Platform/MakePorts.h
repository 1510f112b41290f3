#pragma once

#include <memory>

#include "Tidewell/Ports/Ports.h"

namespace platform {

/// Makes every port for the system that the program was built for. Never fails: where the machine
/// lacks something, a substitute answers as the port's header says.
std::unique_ptr<tidewell::Ports> makePorts();

}  // namespace platform

#pragma once

#include <memory>

#include "Tidewell/Ports/Ports.h"

/// The ports of `whole`, except that the process table tells of living processes only: what work
/// looks like when nothing is kept of the processes that ended. The network meter is one of its
/// own. Everything else is shared.
std::unique_ptr<tidewell::Ports> makePlainPorts(const tidewell::Ports& whole);

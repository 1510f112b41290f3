#pragma once

#include <functional>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// Either an inhibitor lock of logind, which ends when its descriptor is closed, or a negative
/// errno and, when logind refused it, the D-Bus name of its error. The kernel closes it with the
/// process, whichever way that ends.
struct LogindLock {
  int error = 0;
  std::string errorName;
  Descriptor descriptor;
};

/// Asks logind for a lock on `what` ("idle", "sleep", "handle-lid-switch") in `mode` ("block" or
/// "delay"), for the reason `why`. A lock that logind grants only after the call has timed out goes
/// to `late`.
LogindLock takeLogindLock(Bus& systemBus, const char* what, const std::string& why,
                          const char* mode, std::function<void(Descriptor)> late = {});

/// The same, but logind may ask the user, and nobody waits. `answered` runs from the loop when the
/// user has answered. Dropping the result gives it up, and what is granted afterwards back. Empty
/// while there is no connection.
[[nodiscard]] BusSlot askForLogindLock(Bus& systemBus, const char* what, const std::string& why,
                                       const char* mode, std::function<void(LogindLock)> answered);

}  // namespace platform

#pragma once

#include <functional>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// An inhibitor lock of logind, or an error: a negative errno and, when logind refused the lock,
/// the D-Bus name of its error. The lock ends when its descriptor is closed. The kernel closes it
/// when the process ends in any way.
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

/// Does the same, but logind may ask the user, and this call does not wait. `answered` runs from
/// the loop when the user has answered. Dropping the result cancels the request; a lock that is
/// granted afterwards is given back. The result is empty while there is no connection.
[[nodiscard]] BusSlot askForLogindLock(Bus& systemBus, const char* what, const std::string& why,
                                       const char* mode, std::function<void(LogindLock)> answered);

}  // namespace platform

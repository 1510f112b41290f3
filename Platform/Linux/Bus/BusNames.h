#pragma once

#include <string>

namespace platform {

/// Whether a call may make the bus start the called service.
enum class BusActivation { never, ifNeeded };
/// Whether the other side may ask the user before it grants a call. The answer may then take any
/// time, so nobody must wait for such a call.
enum class BusApproval { mustBeGiven, mayBeAsked };

/// Names a method of an object of a service. The texts belong to the caller and must be valid names
/// of D-Bus.
struct BusMethod {
  const char* destination;
  const char* path;
  const char* interface;
  const char* member;
  BusActivation activation = BusActivation::never;
  BusApproval approval = BusApproval::mustBeGiven;
};

/// Names a signal of an object of a service.
struct BusSignal {
  std::string sender;
  std::string path;
  std::string interface;
  std::string member;
};

}  // namespace platform

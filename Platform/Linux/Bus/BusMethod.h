#pragma once

namespace platform {

/// Whether a call may make the bus start the service that it is for.
enum class BusActivation { never, ifNeeded };
/// Whether the other side may ask the user before it grants a call, whose answer then takes any
/// time. Only for calls that nobody waits for.
enum class BusApproval { mustBeGiven, mayBeAsked };

/// Names a method of an object of a service. The texts belong to the caller and must be valid as
/// D-Bus names.
struct BusMethod {
  const char* destination;
  const char* path;
  const char* interface;
  const char* member;
  BusActivation activation = BusActivation::never;
  BusApproval approval = BusApproval::mustBeGiven;
};

}  // namespace platform

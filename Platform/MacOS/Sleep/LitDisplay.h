#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Tidewell/Ports/AssertionTable.h"

namespace platform {

/// What is left of a process's assertions without those that the system holds itself because a
/// display is on.
///
/// The system must not sleep before its displays do. So while a display is on, the power daemon
/// itself holds off idle sleep. `pmset -g assertions` lists that as
///
///     pid 80(powerd): [0x…] 00:22:34 PreventUserIdleSystemSleep
///                     named: "Powerd - Prevent sleep while display is on"
///
/// It says nothing of work: the machine would sleep once the display does. Such an assertion is
/// known by both its owner, a program of the system's own folder with the daemon's name, and by how
/// its name ends. Whatever else the daemon holds stays, and so does what others call their own.
///
/// `owner` gives the path of the process's program, empty where it cannot be told. It is asked only
/// where a name fits, once.
std::vector<tidewell::ListedAssertion> withoutLitDisplay(
    std::vector<tidewell::ListedAssertion> assertions, const std::function<std::string()>& owner);

}  // namespace platform

#pragma once

#include <optional>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/XServer.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/PowerManagement.h"

namespace platform {

/// Whether LXQt's idleness watcher runs in this session, and the X server can be asked. Waits for
/// some bounded calls.
bool canKeepOffLxqt(Bus& sessionBus, const FindXServer& find);

/// Keeps LXQt's idleness watcher from its deed while there is a hold.
///
/// The watcher asks nobody. It looks at how long nobody has used keyboard or mouse, and then does
/// what it is set to do. So the X server counts anew, as after a key, within the last half minute
/// of that time: for a hold of the system only if the watcher would end the work, and for a hold of
/// the display whatever it would do. A hold of the system leaves a dark screen dark. After the hold
/// the watcher waits for what is left of its time: at least 15 s, or a quarter of a time that is
/// shorter than a minute.
///
/// Returns when this is to be done again at the latest; absent where there is no such watcher that
/// would do something. Waits for some bounded calls. Main thread only.
std::optional<tidewell::Seconds> keepOffLxqt(Bus& sessionBus, const FindXServer& find,
                                             tidewell::AssertionKind kind);

}  // namespace platform

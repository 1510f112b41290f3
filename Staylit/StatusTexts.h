#pragma once

#include <string>
#include <vector>

#include "Tidewell/BatteryMonitor.h"
#include "Tidewell/BusyApp.h"
#include "Tidewell/Words.h"

namespace staylit {

/// Texts that the menu, the terminal and the report of the status have in common. Safe from any
/// thread.

// TRANSLATORS: a heading; below it stand the applications that keep the computer awake.
inline constexpr const char* kStayingAwakeFor = tidewell::toBePhrased("Staying awake for");
// TRANSLATORS: a heading; below it stand applications that asked the system not to sleep.
inline constexpr const char* kAskedToStayAwake = tidewell::toBePhrased("Asked to stay awake");
inline constexpr const char* kNothingGrantsTheHold =
    "No service of the system grants the hold — your Mac can sleep";

/// An application and what it does: "ffmpeg — 187% CPU".
[[nodiscard]] std::string rowOf(const tidewell::BusyApp& app,
                                const tidewell::Words& words = tidewell::Words::source());

/// What works and who asks, to follow a summary in one line:
/// "  |  ffmpeg: 182% CPU  |  mpv: asked to stay awake".
[[nodiscard]] std::string whatWorks(const std::vector<tidewell::BusyApp>& busy,
                                    const std::vector<std::string>& asking);

/// "80% · battery · lowPower=false"
[[nodiscard]] std::string describe(const tidewell::PowerState& power);

}  // namespace staylit

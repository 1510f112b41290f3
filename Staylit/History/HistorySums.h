#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "Staylit/History/HistoryTimeline.h"
#include "Tidewell/AppCategory.h"

namespace staylit {

/// How long things went on in a timeline. What two programs recorded at once counts once.
struct HistorySums {
  using Length = std::chrono::nanoseconds;

  struct Work {
    std::string key;
    std::string display;
    tidewell::AppCategory category = tidewell::AppCategory::other;
    Length length{};
    Length onBattery{};  ///< How much of that.
    WorkFigures peak;    ///< The highest figures that are known.
  };
  struct Asking {
    std::string name;
    Length length{};
  };

  Length held{};           ///< The machine was kept awake, the grace period included.
  Length heldOnBattery{};  ///< How much of that.
  Length notGranted{};     ///< The program wanted to hold, and no service granted that.
  Length blocked{};
  Length paused{};
  Length asleep{};
  Length running{};             ///< The program was there, and looked or slept.
  std::vector<Work> works;      ///< The longest first.
  std::vector<Asking> askings;  ///< The longest first.
};

[[nodiscard]] HistorySums sumsOf(const HistoryTimeline& timeline);

}  // namespace staylit

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "Staylit/Replay/MadeUpNames.h"
#include "Staylit/Replay/Tape.h"
#include "Tidewell/ActivityMonitor.h"
#include "Tidewell/SharedText.h"
#include "Tidewell/TextMap.h"

namespace staylit {

/// Folds the processes of each tick into applications, as the activity monitor does, in a list in
/// which each application keeps its place. A tick that brings nothing new allocates nothing. Main
/// thread only.
class TapedApplications {
 public:
  /// Names stay as they are if `names` is null; otherwise it must outlive this.
  explicit TapedApplications(MadeUpNames* names) : names_(names) {}

  void fold(const tidewell::TickInputs& tick, std::vector<TapedApplication>& applications);

  /// The place of the application with this key; absent when it was never seen.
  [[nodiscard]] std::optional<std::size_t> placeOf(std::string_view key) const;

  /// Whether so many applications are gone that the list should be begun anew.
  [[nodiscard]] bool isWorthClearing() const;
  /// Gives up all places.
  void clear();

 private:
  /// An application by the names that it really has.
  struct Known {
    tidewell::SharedText executable;
    std::optional<tidewell::SharedText> bundleID;
    tidewell::SharedText displayName;
    std::uint64_t seenAt = 0;  ///< The number of the last tick that had it.
  };

  std::size_t placeFor(const tidewell::RawSample& sample,
                       std::vector<TapedApplication>& applications);
  void beginTick(const tidewell::RawSample& first, std::size_t place,
                 TapedApplication& application);

  MadeUpNames* names_;
  tidewell::TextMap<std::size_t> places_;
  std::vector<Known> known_;  ///< By place.
  std::uint64_t ticks_ = 0;
  std::size_t present_ = 0;
};

}  // namespace staylit

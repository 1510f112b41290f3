#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/ListedInhibitor.h"

namespace platform {

/// Reads the inhibitors that the session manager of GNOME, MATE or Cinnamon lists. Main thread
/// only.
///
/// A reading costs one call. The details of an inhibitor never change, and are asked for only once.
class SessionManagerList {
 public:
  /// What a reading asks about the inhibitors that are new.
  enum class Extent {
    briefly,  ///< Not the reasons, and some of them only with the next readings.
    wholly,   ///< The reasons too, as long as it takes, up to some seconds.
  };

  /// `sessionBus` must outlive this.
  explicit SessionManagerList(Bus& sessionBus, Extent extent = Extent::briefly);

  /// Absent when there is no such session manager, or it cannot be asked. An inhibitor that
  /// vanishes during the reading is left out.
  std::optional<std::vector<ListedInhibitor>> list();

 private:
  std::optional<ListedInhibitor> details(const std::string& path);

  Bus& sessionBus_;
  Extent extent_;
  std::map<std::string, ListedInhibitor> detailsByPath_;
  BusListening presence_;
};

}  // namespace platform

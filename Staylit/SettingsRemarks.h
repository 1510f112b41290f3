#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Staylit/Published.h"
#include "Staylit/StaylitEngine.h"

namespace staylit {

/// Looks at each tick whether somebody wrote settings that do not count as they stand, and hands
/// over the remarks on them, each once. Logs them, too.
///
/// Main thread only; the engine must outlive it, and the ports must be the installed ones.
class SettingsRemarks {
 public:
  using Tell = std::function<void(const std::vector<std::string>& remarks)>;

  SettingsRemarks(StaylitEngine& engine, Tell tell);

 private:
  void look();

  Tell tell_;
  Subscription subscription_;
};

}  // namespace staylit

#include "Staylit/WatchList.h"

#include "Staylit/Prefs.h"

namespace staylit {

void WatchList::setWatched(const std::string& id, bool watched) {
  tidewell::TextSet ignored = Prefs::shared().ignoredApps();
  if (watched) {
    ignored.erase(id);
  } else {
    ignored.insert(id);
  }
  Prefs::shared().setIgnoredApps(ignored);
}

}  // namespace staylit

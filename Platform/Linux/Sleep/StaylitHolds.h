#pragma once

#include <cstdint>
#include <map>

#include "Platform/Linux/Sleep/ListedInhibitor.h"

namespace platform {

/// Tells of listed inhibitors which are a Staylit's, or may be one's that somebody passed on.
///
/// Two Staylits that counted each other's holds, one of each user or one of the system's, would
/// keep the machine awake for ever, each because of the other. A Staylit is known by what it calls
/// itself, whichever user it works for and whatever its reason says, and by its program, as far as
/// this user may see it. Session and power managers hold locks of their own at logind for what
/// others asked of them, and nobody tells for whom. What the programs of this session ask stands in
/// the lists of those services as well; what those of other sessions ask cannot be told from a
/// Staylit's wish.
///
/// Looks into /proc, once for each process, since one can hold thousands. Made for one look at the
/// lists, for processes come and go. Main thread only.
class StaylitHolds {
 public:
  [[nodiscard]] bool mayHave(const ListedInhibitor& inhibitor);

 private:
  std::map<std::int64_t, bool> byProcess_;
};

}  // namespace platform

#pragma once

#include <cstdint>
#include <map>

#include "Platform/Linux/Sleep/ListedInhibitor.h"

namespace platform {

/// Tells which listed inhibitors belong to a Staylit, or may be passed on for one.
///
/// Two Staylits, for example of two users, that counted each other's holds would keep the machine
/// awake for ever. A Staylit is recognised by the name that it gives itself, and by its program as
/// far as this user may see it. Session and power managers pass on what others asked of them: they
/// take locks of their own at logind, and do not tell for whom. The wishes of this session's
/// programs stand in the lists of those managers as well. The wishes of other sessions cannot be
/// told from those of a Staylit.
///
/// Looks into /proc only once for each process, because a process may have thousands of inhibitors.
/// Processes come and go, so an object serves only one look at the lists. Main thread only.
class StaylitHolds {
 public:
  [[nodiscard]] bool mayHave(const ListedInhibitor& inhibitor);

 private:
  std::map<std::int64_t, bool> byProcess_;
};

/// Whether the holder may have it for others, whom nobody tells: a session or power manager. Looks
/// into /proc.
[[nodiscard]] bool mayBePassedOn(const ListedInhibitor& inhibitor);

}  // namespace platform

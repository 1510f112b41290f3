#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Proc/ProcFileSystem.h"
#include "Platform/Linux/Sleep/DesktopSetting.h"
#include "Staylit/HoldsReport.h"
#include "Tidewell/Ports/Clock.h"

namespace staylit {

/// Reads all that keeps this machine from sleeping: of logind what every user holds, and of the
/// session's services what the programs of this session hold.
///
/// Other than the list by which the running program decides, this one has the holds of every
/// Staylit, and those that session and power managers pass on. Main thread only.
class HoldsReader {
 public:
  /// Where it looks. The defaults are the machine's own.
  struct Places {
    std::filesystem::path logindHolds = "/run/systemd/inhibit";
    std::string settingsTool = platform::kSettingsTool;
  };

  /// The buses and the clock must outlive this.
  HoldsReader(platform::Bus& systemBus, platform::Bus& sessionBus, tidewell::Clock& clock)
      : HoldsReader(systemBus, sessionBus, clock, Places()) {}
  HoldsReader(platform::Bus& systemBus, platform::Bus& sessionBus, tidewell::Clock& clock,
              Places places);

  /// Takes the time of a tick where there are owners to be watched, and that of the services, each
  /// call of which is bounded.
  HoldsReport read();

  /// Only the holds, without what their owners do.
  HoldsReport listHolds();
  /// Who puts the machine to sleep.
  void addDeciders(HoldsReport& report);

 private:
  void addLogind(HoldsReport& report);
  void addSession(HoldsReport& report);
  void lookAtOwners(HoldsReport& report);
  void askStaylit(HoldsReport& report);
  void watch(const std::set<std::int32_t>& owners, platform::ProcFileSystem& proc,
             HoldsReport& report);
  bool countsProcessesAlike();

  platform::Bus& systemBus_;
  platform::Bus& sessionBus_;
  tidewell::Clock& clock_;
  Places places_;
};

}  // namespace staylit

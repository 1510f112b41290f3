#pragma once

#include <filesystem>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Staylit/Desktop/Holds/HoldsReader.h"
#include "Staylit/Desktop/Machine/MachineApplication.h"
#include "Staylit/DoctorReport.h"
#include "Tidewell/Ports/Clock.h"

namespace staylit {

/// Looks at this machine for `--doctor`. It takes one hold and gives it back; else it changes
/// nothing. A Staylit that runs is left alone. Main thread only; the arguments must outlive it.
class Examination {
 public:
  Examination(platform::EventLoop& loop, platform::Buses& buses, tidewell::Clock& clock,
              HoldsReader::Places places = HoldsReader::Places(),
              std::filesystem::path machineSettings = MachineApplication::settings());

  /// Some seconds where a service takes its time with a hold.
  DoctorFacts run();

 private:
  void tryAHold(DoctorFacts& facts);
  void lookAtSettings(DoctorFacts& facts);
  void lookForStaylit(DoctorFacts& facts);
  void addParticulars(DoctorFacts& facts);
  DoctorFacts::Tray tray();
  bool hasPolkit();
  static bool isOwned(platform::Bus& bus, const char* name);

  platform::EventLoop& loop_;
  platform::Buses& buses_;
  tidewell::Clock& clock_;
  HoldsReader reader_;
  std::filesystem::path machineSettings_;
};

}  // namespace staylit

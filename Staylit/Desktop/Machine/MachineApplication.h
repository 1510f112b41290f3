#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Staylit/Application.h"

namespace staylit {

/// The program that serves a whole machine: it belongs to no session and shows nothing, and its
/// service manager starts and ends it (`staylit --system`).
///
/// One such program runs on a machine: it owns its name on the system bus, as far as the policy of
/// that bus lets it, and a later start ends at once. Where the name cannot be had, the program does
/// its work all the same, and only nobody can ask it for its status. It ends in order on SIGTERM,
/// SIGINT and SIGHUP. Main thread only; the arguments must outlive it.
class MachineApplication : public Application {
 public:
  static constexpr const char* kOption = "--system";

  /// Whether `arguments`, which are all of the process, ask for this program.
  [[nodiscard]] static bool isAskedFor(const std::vector<std::string>& arguments);
  /// The settings of this program, which the administrator writes.
  [[nodiscard]] static std::filesystem::path settings();

  MachineApplication(platform::EventLoop& loop, platform::Bus& systemBus);

  void run(ApplicationDelegate& delegate) override;

 private:
  void keepName();

  platform::EventLoop& loop_;
  platform::Bus& bus_;
  platform::BusListening connection_;
  platform::BusSlot request_;
};

}  // namespace staylit

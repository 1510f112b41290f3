#include "Staylit/Desktop/Machine/MachineApplication.h"

#include <algorithm>
#include <cstdint>

#include "Staylit/Desktop/Session/ApplicationService.h"
#include "Tidewell/Log.h"

namespace staylit {
namespace {

using platform::BusReply;

constexpr platform::BusMethod kRequestName{"org.freedesktop.DBus", "/org/freedesktop/DBus",
                                           "org.freedesktop.DBus", "RequestName"};
/// The name comes later where another program has it now.
int appendName(sd_bus_message* call) {
  return sd_bus_message_append(call, "su", ApplicationService::kName, std::uint32_t{0});
}

void logRefusal(const BusReply& reply) {
  if (reply) return;
  tidewell::Log::error("nobody can ask for the status, because the system bus gives no name: " +
                       (reply.errorName.empty() ? "it does not answer" : reply.errorName));
}

}  // namespace

bool MachineApplication::isAskedFor(const std::vector<std::string>& arguments) {
  return std::ranges::find(arguments, kOption) != arguments.end();
}

std::filesystem::path MachineApplication::settings() {
  return "/etc/staylit/settings.toml";
}

MachineApplication::MachineApplication(platform::EventLoop& loop, platform::Bus& systemBus)
    : loop_(loop), bus_(systemBus) {}

void MachineApplication::run(ApplicationDelegate& delegate) {
  // The signals are blocked before any other thread exists, so that only the loop gets them.
  loop_.watchTerminationSignals([this] { loop_.stop(); });
  if (bus_.nameStatus(ApplicationService::kName).isOwned()) {
    return tidewell::Log::error("another Staylit serves this machine already");
  }
  delegate.applicationDidFinishLaunching();
  // The status is offered by now: whoever finds the name must find it.
  keepName();
  loop_.run();
  delegate.applicationWillTerminate();
}

void MachineApplication::keepName() {
  connection_ = bus_.watchConnection([this](bool isConnected) {
    if (isConnected) request_ = bus_.callAsync(kRequestName, appendName, logRefusal);
  });
}

}  // namespace staylit

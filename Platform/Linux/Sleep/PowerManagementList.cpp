#include "Platform/Linux/Sleep/PowerManagementList.h"

#include <string>
#include <utility>

#include "Platform/Linux/Sleep/Services.h"
#include "Tidewell/ForeignText.h"

namespace platform {
namespace {

constexpr const char* kInhibitPath = "/org/freedesktop/PowerManagement/Inhibit";
constexpr const char* kInhibitInterface = "org.freedesktop.PowerManagement.Inhibit";

BusReply askPowerManagement(Bus& sessionBus, const char* member) {
  return sessionBus.call({services::kPowerManagement, kInhibitPath, kInhibitInterface, member});
}

ListedInhibitor heldBy(std::string holder) {
  ListedInhibitor inhibitor;
  inhibitor.holder = std::move(holder);
  inhibitor.types = {"PreventUserIdleSystemSleep"};
  return inhibitor;
}

std::optional<std::vector<ListedInhibitor>> readNames(sd_bus_message* message) {
  if (sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "s") < 0) return std::nullopt;
  std::vector<ListedInhibitor> result;
  const char* name = nullptr;
  while (sd_bus_message_read(message, "s", &name) > 0)
    result.push_back(heldBy(tidewell::cleaned(name)));
  return result;
}

}  // namespace

std::optional<std::vector<ListedInhibitor>> listPowerManagementInhibitors(Bus& sessionBus) {
  if (!sessionBus.nameStatus(services::kPowerManagement).isOwned()) return std::nullopt;
  const BusReply names = askPowerManagement(sessionBus, "GetInhibitors");
  if (names) {
    if (auto result = readNames(names.message.get())) return result;
  }
  const BusReply whether = askPowerManagement(sessionBus, "HasInhibit");
  int isInhibited = 0;
  if (!whether || sd_bus_message_read(whether.message.get(), "b", &isInhibited) <= 0) {
    return std::nullopt;
  }
  if (isInhibited == 0) return std::vector<ListedInhibitor>();
  return std::vector{heldBy("")};
}

}  // namespace platform

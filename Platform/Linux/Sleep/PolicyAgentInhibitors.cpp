#include "Platform/Linux/Sleep/PolicyAgentInhibitors.h"

#include <utility>

#include "Platform/Linux/Sleep/Services.h"
#include "Tidewell/ForeignText.h"

namespace platform {

std::optional<std::vector<ListedInhibitor>> listPolicyAgentInhibitors(Bus& sessionBus) {
  if (!sessionBus.nameStatus(services::kPolicyAgent).isOwned()) return std::nullopt;
  const BusReply reply = sessionBus.call({services::kPolicyAgent, services::kPolicyAgentPath,
                                          services::kPolicyAgent, "ListInhibitions"});
  if (!reply) return std::nullopt;
  sd_bus_message* const message = reply.message.get();
  if (sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "(ss)") < 0) return std::nullopt;
  std::vector<ListedInhibitor> result;
  const char* application = nullptr;
  const char* why = nullptr;
  while (sd_bus_message_read(message, "(ss)", &application, &why) > 0) {
    result.push_back({0,
                      tidewell::cleaned(application),
                      tidewell::cleaned(why),
                      {"PreventUserIdleSystemSleep"},
                      255});
  }
  return result;
}

}  // namespace platform

#include "Platform/Linux/Sleep/PolicyAgentList.h"

#include "Platform/Linux/Sleep/Services.h"
#include "Tidewell/ForeignText.h"

namespace platform {

std::optional<std::vector<PolicyAgentEntry>> readPolicyAgentList(const BusReply& reply) {
  sd_bus_message* const message = reply.message.get();
  if (!reply || sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "(ss)") < 0) {
    return std::nullopt;
  }
  std::vector<PolicyAgentEntry> entries;
  const char* application = nullptr;
  const char* reason = nullptr;
  int result = 0;
  while ((result = sd_bus_message_read(message, "(ss)", &application, &reason)) > 0)
    entries.push_back({application, reason});
  if (result < 0) return std::nullopt;
  return entries;
}

std::optional<std::vector<ListedInhibitor>> listPolicyAgentInhibitors(Bus& sessionBus) {
  if (!sessionBus.nameStatus(services::kPolicyAgent).isOwned()) return std::nullopt;
  const auto entries =
      readPolicyAgentList(sessionBus.call({services::kPolicyAgent, services::kPolicyAgentPath,
                                           services::kPolicyAgent, "ListInhibitions"}));
  if (!entries) return std::nullopt;
  std::vector<ListedInhibitor> result;
  for (const PolicyAgentEntry& entry : *entries) {
    result.push_back({0,
                      tidewell::cleaned(entry.application),
                      tidewell::cleaned(entry.reason),
                      {"PreventUserIdleSystemSleep"},
                      255});
  }
  return result;
}

}  // namespace platform

#include "Platform/Linux/Sleep/LogindList.h"

#include "Platform/Linux/Sleep/Services.h"
#include "Tidewell/ForeignText.h"

namespace platform {
namespace {

ListedInhibitor listed(const LogindEntry& entry) {
  const int level = entry.mode == "block" || entry.mode == "block-weak" ? 255 : 0;
  ListedInhibitor result{entry.process,
                         tidewell::cleaned(entry.who),
                         tidewell::cleaned(entry.why),
                         {},
                         level,
                         entry.what,
                         entry.user};
  if (namesLock(entry.what, "idle")) result.types.emplace_back("PreventUserIdleSystemSleep");
  if (namesLock(entry.what, "sleep")) result.types.emplace_back("PreventSystemSleep");
  return result;
}

}  // namespace

bool namesLock(std::string_view list, std::string_view lock) {
  while (true) {
    const auto colon = list.find(':');
    if (list.substr(0, colon) == lock) return true;
    if (colon == std::string_view::npos) return false;
    list.remove_prefix(colon + 1);
  }
}

std::optional<std::vector<LogindEntry>> readLogindList(const BusReply& reply) {
  sd_bus_message* const message = reply.message.get();
  if (!reply || sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "(ssssuu)") < 0) {
    return std::nullopt;
  }
  std::vector<LogindEntry> entries;
  const char* what = nullptr;
  const char* who = nullptr;
  const char* why = nullptr;
  const char* mode = nullptr;
  std::uint32_t user = 0;
  std::uint32_t process = 0;
  int result = 0;
  while ((result = sd_bus_message_read(message, "(ssssuu)", &what, &who, &why, &mode, &user,
                                       &process)) > 0) {
    entries.push_back({what, who, why, mode, user, process});
  }
  if (result < 0) return std::nullopt;
  return entries;
}

std::optional<std::vector<ListedInhibitor>> listLogindInhibitors(Bus& systemBus) {
  const auto entries = readLogindList(systemBus.call(
      {services::kLogind, services::kLogindPath, services::kLogindManager, "ListInhibitors"}));
  if (!entries) return std::nullopt;
  std::vector<ListedInhibitor> result;
  for (const LogindEntry& entry : *entries)
    result.push_back(listed(entry));
  return result;
}

}  // namespace platform

#include "Platform/Linux/Sleep/LogindInhibitors.h"

#include <cstdint>
#include <string_view>
#include <utility>

#include "Platform/Linux/Sleep/Services.h"
#include "Tidewell/ForeignText.h"

namespace platform {
namespace {

ListedInhibitor inhibitor(std::string_view what, const char* who, const char* why,
                          std::string_view mode, std::uint32_t pid) {
  const int level = mode == "block" || mode == "block-weak" ? 255 : 0;
  ListedInhibitor result{pid,   tidewell::cleaned(who), tidewell::cleaned(why), {},
                         level, std::string(what)};
  if (namesLock(what, "idle")) result.types.emplace_back("PreventUserIdleSystemSleep");
  if (namesLock(what, "sleep")) result.types.emplace_back("PreventSystemSleep");
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

std::optional<std::vector<ListedInhibitor>> listLogindInhibitors(Bus& systemBus) {
  const BusReply reply = systemBus.call(
      {services::kLogind, services::kLogindPath, services::kLogindManager, "ListInhibitors"});
  if (!reply) return std::nullopt;
  sd_bus_message* const message = reply.message.get();
  if (sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "(ssssuu)") < 0) {
    return std::nullopt;
  }
  std::vector<ListedInhibitor> result;
  const char* what = nullptr;
  const char* who = nullptr;
  const char* why = nullptr;
  const char* mode = nullptr;
  std::uint32_t uid = 0;
  std::uint32_t pid = 0;
  while (sd_bus_message_read(message, "(ssssuu)", &what, &who, &why, &mode, &uid, &pid) > 0) {
    result.push_back(inhibitor(what, who, why, mode, pid));
  }
  return result;
}

}  // namespace platform

#include "Platform/Linux/Sleep/SessionManagerList.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "Platform/Linux/Bus/MessageReading.h"
#include "Platform/Linux/Sleep/Services.h"
#include "Tidewell/ForeignText.h"

namespace platform {
namespace {

/// One reading asks about so many new inhibitors. The others follow in the next readings.
constexpr std::size_t kNewDetailsPerReading = 32;

/// Some session managers have a method for each detail, others have properties with other names.
template <class Value>
bool readDetail(Bus& bus, const std::string& path, const char* method, const char* property,
                const char* type, Value& value, BusReply& reply) {
  reply = bus.call({services::kSessionManager, path.c_str(), services::kSessionInhibitor, method});
  if (reply) return sd_bus_message_read(reply.message.get(), type, &value) > 0;
  reply =
      bus.call({services::kSessionManager, path.c_str(), "org.freedesktop.DBus.Properties", "Get"},
               [property](sd_bus_message* message) {
                 return sd_bus_message_append(message, "ss", services::kSessionInhibitor, property);
               });
  return reply && sd_bus_message_read(reply.message.get(), "v", type, &value) > 0;
}

std::string withoutDesktopSuffix(std::string applicationId) {
  constexpr std::string_view suffix = ".desktop";
  if (applicationId.size() > suffix.size() && applicationId.ends_with(suffix)) {
    applicationId.resize(applicationId.size() - suffix.size());
  }
  return applicationId;
}

}  // namespace

SessionManagerList::SessionManagerList(Bus& sessionBus, Extent extent)
    : sessionBus_(sessionBus),
      extent_(extent),
      presence_(sessionBus.watchName(services::kSessionManager, [this](bool owned) {
        // A successor gives the same paths to other inhibitors.
        if (!owned) detailsByPath_.clear();
      })) {}

std::optional<std::vector<ListedInhibitor>> SessionManagerList::list() {
  if (!sessionBus_.nameStatus(services::kSessionManager).isOwned()) return std::nullopt;
  const BusReply reply = sessionBus_.call({services::kSessionManager, services::kSessionManagerPath,
                                           services::kSessionManager, "GetInhibitors"});
  if (!reply) return std::nullopt;
  std::vector<std::string> paths;
  if (readPaths(reply.message.get(), paths) < 0) return std::nullopt;

  std::map<std::string, ListedInhibitor> known;
  std::vector<ListedInhibitor> result;
  std::size_t asked = 0;
  // The time of all answers together is limited too. What is still unknown then is asked for in the
  // next reading.
  const bool isBrief = extent_ == Extent::briefly;
  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::milliseconds(isBrief ? 500 : 5000);
  for (const std::string& path : paths) {
    std::optional<ListedInhibitor> inhibitor;
    if (auto found = detailsByPath_.find(path); found != detailsByPath_.end()) {
      inhibitor = found->second;
    } else if ((!isBrief || asked++ < kNewDetailsPerReading) &&
               std::chrono::steady_clock::now() < deadline) {
      inhibitor = details(path);
    }
    if (!inhibitor) continue;
    known.emplace(path, *inhibitor);
    result.push_back(std::move(*inhibitor));
  }
  detailsByPath_ = std::move(known);
  return result;
}

std::optional<ListedInhibitor> SessionManagerList::details(const std::string& path) {
  BusReply reply;
  const char* applicationId = nullptr;
  if (!readDetail(sessionBus_, path, "GetAppId", "app_id", "s", applicationId, reply)) {
    return std::nullopt;
  }
  ListedInhibitor result;
  result.holder = tidewell::cleaned(withoutDesktopSuffix(applicationId));
  std::uint32_t flags = 0;
  if (!readDetail(sessionBus_, path, "GetFlags", "flags", "u", flags, reply)) return std::nullopt;
  if ((flags & services::kInhibitsSuspend) != 0)
    result.types.emplace_back("PreventUserIdleSystemSleep");
  if ((flags & services::kInhibitsIdle) != 0)
    result.types.emplace_back("PreventUserIdleDisplaySleep");
  const char* why = nullptr;
  if (extent_ == Extent::wholly &&
      readDetail(sessionBus_, path, "GetReason", "reason", "s", why, reply)) {
    result.why = tidewell::cleaned(why);
  }
  return result;
}

}  // namespace platform

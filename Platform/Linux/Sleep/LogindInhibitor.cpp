#include "Platform/Linux/Sleep/LogindInhibitor.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Linux/Sleep/LogindLock.h"
#include "Platform/Linux/Sleep/Question.h"
#include "Platform/Linux/Sleep/Services.h"
#include "Tidewell/ForeignText.h"

namespace platform {
namespace {

class LogindInhibition : public Inhibition {
 public:
  explicit LogindInhibition(Descriptor descriptor) : descriptor_(std::move(descriptor)) {}

 private:
  Descriptor descriptor_;
};

/// The reasons of Staylit's `idle` locks in the list. Absent when the list has an unknown type.
std::optional<std::vector<std::string>> ownReasons(sd_bus_message* message) {
  if (sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "(ssssuu)") < 0) {
    return std::nullopt;
  }
  std::vector<std::string> reasons;
  const char* what = nullptr;
  const char* who = nullptr;
  const char* why = nullptr;
  const char* mode = nullptr;
  std::uint32_t user = 0;
  std::uint32_t process = 0;
  int read = 0;
  while ((read = sd_bus_message_read(message, "(ssssuu)", &what, &who, &why, &mode, &user,
                                     &process)) > 0) {
    // The user and the process are not compared, because their numbers differ inside and outside of
    // a container.
    const bool isOurs = std::string_view(who) == services::kDisplayName;
    if (isOurs && std::string_view(what) == "idle" && std::string_view(mode) == "block") {
      reasons.emplace_back(why);
    }
  }
  if (read < 0) return std::nullopt;
  return reasons;
}

}  // namespace

LogindInhibitor::LogindInhibitor(Bus& systemBus) : systemBus_(systemBus) {}

const char* LogindInhibitor::serviceName() const {
  return services::kLogind;
}

InhibitMechanism::Taken LogindInhibitor::take(tidewell::AssertionKind /*kind*/,
                                              const std::string& reason, Late late) {
  LogindLock lock = takeLogindLock(
      systemBus_, "idle", reason, "block", [late = std::move(late)](Descriptor descriptor) {
        late(std::make_unique<LogindInhibition>(std::move(descriptor)));
      });
  if (!lock.descriptor) return {lock.error, nullptr};
  return {0, std::make_unique<LogindInhibition>(std::move(lock.descriptor))};
}

std::string LogindInhibitor::told(const std::string& reason) const {
  return tidewell::cleaned(reason);
}

std::shared_ptr<void> LogindInhibitor::list(Listed listed) {
  return asQuestion(systemBus_.callAsync(
      {services::kLogind, services::kLogindPath, services::kLogindManager, "ListInhibitors"}, {},
      [listed = std::move(listed)](const BusReply& reply) {
        if (!reply) return;
        if (auto reasons = ownReasons(reply.message.get())) listed(std::move(*reasons));
      }));
}

}  // namespace platform

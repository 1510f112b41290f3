#include "Platform/Linux/Sleep/LogindInhibitor.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Linux/Sleep/LogindList.h"
#include "Platform/Linux/Sleep/LogindLock.h"
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

/// The reasons of Staylit's `idle` locks in the list.
std::vector<std::string> ownReasons(const std::vector<LogindEntry>& list) {
  std::vector<std::string> reasons;
  for (const LogindEntry& entry : list) {
    // The user and the process are not compared, because their numbers differ inside and outside of
    // a container.
    const bool isOurs = entry.who == services::kDisplayName;
    if (isOurs && entry.what == "idle" && entry.mode == "block") reasons.push_back(entry.why);
  }
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
        if (const auto list = readLogindList(reply)) listed(ownReasons(*list));
      }));
}

}  // namespace platform

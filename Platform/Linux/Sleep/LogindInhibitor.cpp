#include "Platform/Linux/Sleep/LogindInhibitor.h"

#include <memory>
#include <utility>

#include "Platform/Linux/Sleep/LogindLock.h"
#include "Platform/Linux/Sleep/Services.h"

namespace platform {
namespace {

class LogindInhibition : public Inhibition {
 public:
  explicit LogindInhibition(Descriptor descriptor) : descriptor_(std::move(descriptor)) {}

 private:
  Descriptor descriptor_;
};

}  // namespace

LogindInhibitor::LogindInhibitor(Bus& systemBus) : systemBus_(systemBus) {}

const char* LogindInhibitor::serviceName() const {
  return services::kLogind;
}

InhibitMechanism::Taken LogindInhibitor::take(HoldKind /*kind*/, const std::string& reason,
                                              Late late) {
  LogindLock lock = takeLogindLock(
      systemBus_, "idle", reason, "block", [late = std::move(late)](Descriptor descriptor) {
        late(std::make_unique<LogindInhibition>(std::move(descriptor)));
      });
  if (!lock.descriptor) return {lock.error, nullptr};
  return {0, std::make_unique<LogindInhibition>(std::move(lock.descriptor))};
}

}  // namespace platform

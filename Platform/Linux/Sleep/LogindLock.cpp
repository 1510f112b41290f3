#include "Platform/Linux/Sleep/LogindLock.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

#include "Platform/Linux/Sleep/Services.h"
#include "Tidewell/ForeignText.h"

namespace platform {
namespace {

LogindLock lockIn(sd_bus_message* reply) {
  int number = -1;
  if (const int result = sd_bus_message_read(reply, "h", &number); result < 0)
    return {result, {}, {}};
  // The message keeps its own.
  Descriptor descriptor(::fcntl(number, F_DUPFD_CLOEXEC, 3));
  if (!descriptor) return {-errno, {}, {}};
  return {0, {}, std::move(descriptor)};
}

}  // namespace

LogindLock takeLogindLock(Bus& systemBus, const char* what, const std::string& why,
                          const char* mode, std::function<void(Descriptor)> late,
                          BusApproval approval) {
  Bus::LateReply lateReply;
  if (late) {
    lateReply = [late = std::move(late)](const BusMessage& message) {
      if (LogindLock lock = lockIn(message.get()); lock.descriptor) {
        late(std::move(lock.descriptor));
      }
    };
  }
  const std::string reason = tidewell::cleaned(why);
  const BusReply reply = systemBus.call(
      {services::kLogind, services::kLogindPath, services::kLogindManager, "Inhibit",
       BusActivation::never, approval},
      [&](sd_bus_message* message) {
        return sd_bus_message_append(message, "ssss", what, services::kDisplayName, reason.c_str(),
                                     mode);
      },
      std::move(lateReply));
  if (!reply) return {reply.error, reply.errorName, {}};
  return lockIn(reply.message.get());
}

}  // namespace platform

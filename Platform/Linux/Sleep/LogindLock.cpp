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
  // The descriptor in the message belongs to the message.
  Descriptor descriptor(::fcntl(number, F_DUPFD_CLOEXEC, 3));
  if (!descriptor) return {-errno, {}, {}};
  return {0, {}, std::move(descriptor)};
}

BusMethod inhibit(BusApproval approval) {
  return {services::kLogind, services::kLogindPath, services::kLogindManager,
          "Inhibit",         BusActivation::never,  approval};
}

Bus::Arguments request(const char* what, const std::string& why, const char* mode) {
  return [what, reason = tidewell::cleaned(why), mode](sd_bus_message* message) {
    return sd_bus_message_append(message, "ssss", what, services::kDisplayName, reason.c_str(),
                                 mode);
  };
}

LogindLock lockOf(const BusReply& reply) {
  if (!reply) return {reply.error, reply.errorName, {}};
  return lockIn(reply.message.get());
}

}  // namespace

LogindLock takeLogindLock(Bus& systemBus, const char* what, const std::string& why,
                          const char* mode, std::function<void(Descriptor)> late) {
  Bus::LateReply lateReply;
  if (late) {
    lateReply = [late = std::move(late)](const BusMessage& message) {
      if (LogindLock lock = lockIn(message.get()); lock.descriptor) {
        late(std::move(lock.descriptor));
      }
    };
  }
  return lockOf(systemBus.call(inhibit(BusApproval::mustBeGiven), request(what, why, mode),
                               std::move(lateReply)));
}

BusSlot askForLogindLock(Bus& systemBus, const char* what, const std::string& why, const char* mode,
                         std::function<void(LogindLock)> answered) {
  return systemBus.callAsync(
      inhibit(BusApproval::mayBeAsked), request(what, why, mode),
      [answered = std::move(answered)](const BusReply& reply) { answered(lockOf(reply)); });
}

}  // namespace platform

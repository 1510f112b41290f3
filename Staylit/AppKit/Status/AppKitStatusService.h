#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "Platform/MacOS/CoreFoundation/CFRef.h"
#include "Staylit/StatusReporter.h"
#include "Staylit/UserInterface.h"

namespace staylit {

/// The status for other programs of the login session: a message port that answers any message with
/// the report as JSON. Nothing can be changed through it, and it does nothing until it is asked.
///
/// Where another program has the port's name, nobody can ask. Main thread only; the reporter must
/// outlive it.
class AppKitStatusService final : public StatusService {
 public:
  /// The name of the port.
  static CFStringRef portName();

  explicit AppKitStatusService(StatusReporter& reporter);
  ~AppKitStatusService() override;

 private:
  static CFDataRef answer(CFMessagePortRef port, SInt32 message, CFDataRef data, void* info);

  StatusReporter& reporter_;
  platform::CFRef<CFMessagePortRef> port_;
};

}  // namespace staylit

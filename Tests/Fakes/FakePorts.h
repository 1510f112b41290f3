#pragma once

#include <memory>

#include "Tests/Fakes/CallLog.h"
#include "Tests/Fakes/FakeAssertionTable.h"
#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Fakes/FakeDefaults.h"
#include "Tests/Fakes/FakeFileManager.h"
#include "Tests/Fakes/FakeLidSwitch.h"
#include "Tests/Fakes/FakeLineStore.h"
#include "Tests/Fakes/FakeLoginItem.h"
#include "Tests/Fakes/FakeMainLoop.h"
#include "Tests/Fakes/FakeNetworkMeter.h"
#include "Tests/Fakes/FakePowerManagement.h"
#include "Tests/Fakes/FakePowerSources.h"
#include "Tests/Fakes/FakePrivilegedScripts.h"
#include "Tests/Fakes/FakeProcessInfo.h"
#include "Tests/Fakes/FakeProcessTable.h"
#include "Tests/Fakes/FakeRunningApplications.h"
#include "Tests/Fakes/FakeSerialQueues.h"
#include "Tests/Fakes/FakeSleepNotifications.h"
#include "Tests/Fakes/FakeSystemLog.h"
#include "Tests/Fakes/FakeTaskLauncher.h"
#include "Tests/Fakes/FakeText.h"
#include "Tidewell/Ports/Ports.h"

namespace tidewell {

/// A whole system made of fakes, which is installed for as long as it lives. All that is made on
/// its ports must be destroyed before it.
struct FakePorts {
  FakePorts() = default;
  FakePorts(const FakePorts&) = delete;
  FakePorts& operator=(const FakePorts&) = delete;

  /// The calls to all fakes, in order.
  std::shared_ptr<CallLog> calls = std::make_shared<CallLog>();

  FakeSystemLog log{calls};
  FakeClock clock;
  FakeConsole console;
  FakeText text;
  FakeDefaults defaults{calls};
  FakeMainLoop mainLoop{calls};
  FakeRunningApplications applications{calls};
  FakeProcessTable processes{calls, applications};
  FakeSerialQueues queues{calls};
  FakeNetworkMeter network;
  FakePowerSources powerSources{calls};
  FakePowerManagement power{calls};
  FakeAssertionTable assertions{calls};
  FakeSleepNotifications sleepNotifications{calls};
  FakeProcessInfo processInfo;
  FakeLoginItem loginItem{calls};
  FakeTaskLauncher tasks{calls};
  FakePrivilegedScripts scripts{calls};
  FakeFileManager files{calls};
  FakeLidSwitch lidSwitch{calls};  ///< In use only after `useLidSwitch`.

  FakeLineStore historyLines{calls};  ///< In use only after `keepHistory`.

  Ports ports{borrowed(log),
              borrowed(clock),
              borrowed(console),
              borrowed(text),
              borrowed(defaults),
              borrowed(mainLoop),
              borrowed(processes),
              borrowed(applications),
              borrowed(queues),
              borrowed(network),
              borrowed(powerSources),
              borrowed(power),
              borrowed(assertions),
              borrowed(sleepNotifications),
              borrowed(loginItem),
              nullptr,
              borrowed(processInfo),
              borrowed(tasks),
              borrowed(scripts),
              borrowed(files),
              nullptr};

  /// Makes this a system that has a lid switch.
  void useLidSwitch() { ports.lidSwitch = borrowed(lidSwitch); }
  /// Makes this a system that keeps a history.
  void keepHistory() { ports.historyLines = borrowed(historyLines); }

 protected:
  /// A pointer that owns nothing.
  template <typename Port>
  static std::shared_ptr<Port> borrowed(Port& port) {
    return {std::shared_ptr<void>(), &port};
  }

 private:
  InstalledPorts installed_{ports};
};

}  // namespace tidewell

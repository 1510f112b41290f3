#include "Staylit/Desktop/Control/RunningStaylit.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Platform/Support/SilentBus.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace staylit {
namespace {

using platform::testing::BusService;
using platform::testing::ScopedEnvironment;
using Command = ControlRequest::Kind;

/// A command for one that runs as another version, or as a program that is none, may run.
class RunningStaylitTest : public platform::testing::BusTest {
 protected:
  int obey(const ControlRequest& request) {
    platform::Bus bus(*loop, platform::Bus::Kind::session);
    return RunningStaylit(*loop, bus, console, clock).obey(request);
  }
  BusService answering(std::function<void(sd_bus_message*)> answer) {
    return {sessionDaemon->address(), {"com.staylit.app"}, std::move(answer)};
  }

  platform::testing::TemporaryFolder folder;
  ScopedEnvironment runtime{"XDG_RUNTIME_DIR", folder.path().string()};
  tidewell::FakeConsole console;
  tidewell::FakeClock clock;
};

TEST_F(RunningStaylitTest, SaysThatNoneRuns) {
  EXPECT_EQ(obey({Command::pause, {}}), 3);
  EXPECT_EQ(console.error, "staylit: Staylit does not run\n");
}

TEST_F(RunningStaylitTest, KnowsByTheLockThatNoneRunsWithoutABus) {
  const ScopedEnvironment none("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
  EXPECT_EQ(obey({Command::quit, {}}), 3);
}

TEST_F(RunningStaylitTest, CannotKnowWithoutABusAndWithoutALock) {
  const ScopedEnvironment none("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
  const ScopedEnvironment missing("XDG_RUNTIME_DIR", (folder.path() / "missing").string());
  EXPECT_EQ(obey({Command::quit, {}}), 2);
  EXPECT_EQ(console.error, "staylit: there is no session bus here on which one could be asked\n");
}

TEST_F(RunningStaylitTest, SaysThatOneOfAnotherVersionDoesNotKnowTheCommand) {
  const BusService old = answering([](sd_bus_message* call) {
    sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_OBJECT, "none");
  });
  EXPECT_EQ(obey({Command::resume, {}}), 2);
  EXPECT_EQ(console.error,
            "staylit: the Staylit that runs is of another version, which does not know this "
            "command\n");
}

TEST_F(RunningStaylitTest, TakesAnyAnswerForWhatItMayMean) {
  const BusService odd =
      answering([](sd_bus_message* call) { sd_bus_reply_method_return(call, "x", INT64_MAX); });
  EXPECT_EQ(obey({Command::pause, {}}), 0);
  EXPECT_TRUE(console.output.starts_with("Paused for ")) << console.output;
}

TEST_F(RunningStaylitTest, SaysThatTheOwnerDoesNotAnswer) {
  const BusService hung = answering([](sd_bus_message*) {});
  EXPECT_EQ(obey({Command::togglePause, {}}), 2);
  EXPECT_EQ(console.error, "staylit: the Staylit that runs does not answer\n");
}

}  // namespace
}  // namespace staylit

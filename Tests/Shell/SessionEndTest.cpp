#include <gtest/gtest.h>
#include <linux/magic.h>
#include <sys/statfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "Staylit/Desktop/Session/LoginSession.h"
#include "Staylit/Desktop/Session/SessionClient.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/BusTest.h"

namespace staylit {
namespace {

using platform::testing::BusService;

/// A session manager with one client.
class FakeSessionManager {
 public:
  explicit FakeSessionManager(const std::string& address)
      : service_(address, {"org.gnome.SessionManager"},
                 [this](sd_bus_message* call) { answer(call); }) {}

  /// Every call, as "Member values".
  std::vector<std::string> log() {
    const std::lock_guard lock(mutex_);
    return log_;
  }
  void tell(const char* member, bool hasFlags = true) {
    service_.perform([=](sd_bus* bus) {
      if (hasFlags) {
        sd_bus_emit_signal(bus, kClient, "org.gnome.SessionManager.ClientPrivate", member, "u", 0U);
      } else {
        sd_bus_emit_signal(bus, kClient, "org.gnome.SessionManager.ClientPrivate", member, "");
      }
    });
  }

 private:
  static constexpr const char* kClient = "/org/gnome/SessionManager/Client7";

  void answer(sd_bus_message* call) {
    const std::string_view member = sd_bus_message_get_member(call);
    const std::lock_guard lock(mutex_);
    if (member == "RegisterClient") {
      const char* application = nullptr;
      const char* startup = nullptr;
      sd_bus_message_read(call, "ss", &application, &startup);
      log_.push_back(std::string("RegisterClient ") + application + " " + startup);
      sd_bus_reply_method_return(call, "o", kClient);
    } else {
      int isOk = 0;
      const char* reason = nullptr;
      sd_bus_message_read(call, "bs", &isOk, &reason);
      log_.push_back(std::string(member) + (isOk != 0 ? " yes " : " no ") + reason);
      sd_bus_reply_method_return(call, "");
    }
  }

  std::mutex mutex_;
  std::vector<std::string> log_;
  BusService service_;
};

class SessionClientTest : public platform::testing::BusTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    if (IsSkipped()) return;
    ASSERT_EQ(sessionBus->connect(), 0);
  }
  void registerClient() {
    manager.emplace(sessionDaemon->address());
    client.emplace(*sessionBus, [this] { ++ended; });
    ASSERT_TRUE(eventually([this] { return manager->log().size() == 1; }));
    platform::testing::runBriefly(*loop);
  }

  std::optional<FakeSessionManager> manager;
  std::optional<SessionClient> client;
  int ended = 0;
};

TEST_F(SessionClientTest, RegistersUnderTheIdentifierThatItWasStartedWith) {
  const platform::testing::ScopedEnvironment id("DESKTOP_AUTOSTART_ID", "10abc");
  registerClient();
  EXPECT_EQ(manager->log()[0], "RegisterClient com.staylit.app 10abc");
  EXPECT_EQ(std::getenv("DESKTOP_AUTOSTART_ID"), nullptr);
}

TEST_F(SessionClientTest, AgreesToTheEndOfTheSessionAndWaitsForIt) {
  registerClient();
  manager->tell("QueryEndSession");
  EXPECT_TRUE(eventually([this] { return manager->log().size() == 2; }));
  EXPECT_EQ(manager->log()[1], "EndSessionResponse yes ");
  manager->tell("CancelEndSession", false);
  platform::testing::runBriefly(*loop);
  EXPECT_EQ(ended, 0);
}

TEST_F(SessionClientTest, EndsWithTheSession) {
  registerClient();
  manager->tell("EndSession");
  EXPECT_TRUE(eventually([this] { return ended == 1; }));
  EXPECT_EQ(manager->log().back(), "EndSessionResponse yes ");
}

TEST_F(SessionClientTest, EndsWhenItIsStopped) {
  registerClient();
  manager->tell("Stop", false);
  EXPECT_TRUE(eventually([this] { return ended == 1; }));
}

TEST_F(SessionClientTest, RegistersAgainWithAManagerThatWasRestarted) {
  registerClient();
  manager.reset();
  manager.emplace(sessionDaemon->address());
  EXPECT_TRUE(eventually([this] { return manager->log().size() == 1; }));
  platform::testing::runBriefly(*loop);
  manager->tell("Stop", false);
  EXPECT_TRUE(eventually([this] { return ended == 1; }));
}

TEST_F(SessionClientTest, OutlivesItsBus) {
  registerClient();
  manager.reset();
  sessionDaemon->stop();
  EXPECT_TRUE(eventually([this] { return sessionBus->handle() == nullptr; }));
  EXPECT_EQ(ended, 0);
}

/// Adds a session to the folder in which logind keeps its sessions. All processes share that
/// folder, so the session gets a name that no real session has.
class LoginSessionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::error_code error;
    std::filesystem::create_directories("/run/systemd/sessions", error);
    write("active");
    if (!std::filesystem::exists(kFile)) GTEST_SKIP() << "/run/systemd/sessions is not ours";
  }
  void TearDown() override {
    std::error_code error;
    std::filesystem::remove(kFile, error);
  }
  static void write(const std::string& state) {
    std::ofstream(kFile + "new") << "ACTIVE=1\nSTATE=" << state << "\nTYPE=x11\n";
    std::error_code error;
    std::filesystem::rename(kFile + "new", kFile, error);
  }
  bool eventually(const std::function<bool()>& condition) {
    return platform::testing::runUntil(loop, condition);
  }

  // The name contains the process, because several of these tests may run at once.
  static inline const std::string kSession = "staylittest" + std::to_string(getpid());
  static inline const std::string kFile = "/run/systemd/sessions/" + kSession;
  platform::EventLoop loop;
  int ended = 0;
};

TEST_F(LoginSessionTest, TellsThatTheSessionIsClosing) {
  const LoginSession session(loop, kSession, [this] { ++ended; });
  write("online");
  platform::testing::runBriefly(loop);
  EXPECT_EQ(ended, 0);
  write("closing");
  EXPECT_TRUE(eventually([this] { return ended == 1; }));
  std::filesystem::remove(kFile);
  platform::testing::runBriefly(loop);
  EXPECT_EQ(ended, 1);
}

TEST_F(LoginSessionTest, TellsThatTheSessionIsGone) {
  const LoginSession session(loop, kSession, [this] { ++ended; });
  std::filesystem::remove(kFile);
  EXPECT_TRUE(eventually([this] { return ended == 1; }));
}

TEST(LoginSessionUnit, OnlyTheUnitOfTheProgramOutlivesSessions) {
  EXPECT_TRUE(LoginSession::outlivesSessions("staylit.service"));
  EXPECT_FALSE(LoginSession::outlivesSessions("app-com.staylit.app@autostart.service"));
  EXPECT_FALSE(LoginSession::outlivesSessions("dbus-:1.2-com.staylit.app@0.service"));
  EXPECT_FALSE(LoginSession::outlivesSessions(""));
}

/// A control group as a user's service manager makes it, for a user that does not exist.
class UnitGroup {
 public:
  explicit UnitGroup(const std::string& unit) {
    const std::string user = std::to_string(2'000'000 + ::getpid());
    for (const std::string root : {"/sys/fs/cgroup", "/sys/fs/cgroup/unified"}) {
      struct statfs information {};
      if (::statfs(root.c_str(), &information) != 0 || information.f_type != CGROUP2_SUPER_MAGIC)
        continue;
      slice_ = root + "/user.slice/user-" + user + ".slice";
      path_ = slice_ + "/user@" + user + ".service/app.slice/" + unit;
      std::error_code error;
      std::filesystem::create_directories(path_, error);
      if (error) path_.clear();
    }
  }
  ~UnitGroup() {
    for (auto path = path_; path.string().size() >= slice_.size() && !slice_.empty();
         path = path.parent_path()) {
      ::rmdir(path.c_str());
    }
  }
  UnitGroup(const UnitGroup&) = delete;
  UnitGroup& operator=(const UnitGroup&) = delete;

  [[nodiscard]] bool exists() const { return !path_.empty(); }

  /// Whether a process in this group counts itself as one that outlives sessions. Absent when no
  /// process can be put into the group.
  [[nodiscard]] std::optional<bool> outlivesSessions() const {
    const pid_t child = ::fork();
    if (child == 0) {
      std::ofstream(path_ / "cgroup.procs") << ::getpid() << std::flush;
      std::ifstream own("/proc/self/cgroup");
      const std::string groups((std::istreambuf_iterator<char>(own)), {});
      if (groups.find(path_.filename()) == std::string::npos) ::_exit(2);
      ::_exit(LoginSession::outlivesSessions() ? 1 : 0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) == 2) return std::nullopt;
    return WEXITSTATUS(status) == 1;
  }

 private:
  std::string slice_;
  std::filesystem::path path_;
};

TEST(LoginSessionUnit, IsFoundInTheControlGroupOfTheProcess) {
  const UnitGroup own("staylit.service");
  const UnitGroup started("app-com.staylit.app@autostart.service");
  if (!own.exists() || !own.outlivesSessions())
    GTEST_SKIP() << "control groups cannot be made here";
  EXPECT_EQ(own.outlivesSessions(), true);
  EXPECT_EQ(started.outlivesSessions(), false);
}

TEST_F(LoginSessionTest, MayBeDroppedInItsOwnCallback) {
  std::optional<LoginSession> session;
  session.emplace(loop, kSession, [&] {
    ++ended;
    session.reset();
  });
  std::filesystem::remove(kFile);
  EXPECT_TRUE(eventually([this] { return ended == 1; }));
}

}  // namespace
}  // namespace staylit

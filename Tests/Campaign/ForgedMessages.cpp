#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Posix/Files/Descriptor.h"
#include "Tests/Campaign/Campaigns.h"
#include "Tests/Campaign/ProgramFigures.h"
#include "Tests/EndToEnd/OwnMachine.h"
#include "Tests/Platform/Support/FakePropertyService.h"
#include "Tests/Platform/Support/Stranger.h"

namespace staylit::campaign {
namespace {

using namespace std::chrono_literals;
using platform::testing::FakePropertyService;
using platform::testing::Stranger;
using testing::ChildProgram;
using Policy = testing::OwnMachine::Policy;
using Steady = std::chrono::steady_clock;

constexpr const char* kBusPath = "/org/freedesktop/DBus";
constexpr const char* kBusName = "org.freedesktop.DBus";
constexpr const char* kLogind = "org.freedesktop.login1";
constexpr const char* kLogindPath = "/org/freedesktop/login1";
constexpr const char* kManager = "org.freedesktop.login1.Manager";
constexpr const char* kPropertiesInterface = "org.freedesktop.DBus.Properties";
constexpr const char* kUPower = "org.freedesktop.UPower";
constexpr const char* kUPowerPath = "/org/freedesktop/UPower";
constexpr const char* kBattery = "/org/freedesktop/UPower/devices/DisplayDevice";
constexpr const char* kDevice = "org.freedesktop.UPower.Device";
constexpr const char* kProfiles = "org.freedesktop.UPower.PowerProfiles";
constexpr const char* kProfilesPath = "/org/freedesktop/UPower/PowerProfiles";
constexpr const char* kWatcher = "org.kde.StatusNotifierWatcher";

constexpr long kMostGrowthKB = 1024;

enum class Where { systemBus, sessionBus };

/// A kind of message that somebody else sends to the program.
struct Kind {
  const char* name;
  Where where;
  std::function<bool(sd_bus*, const std::string& to)> send;
};

/// A signal to the program alone.
template <class... Arguments>
Kind signal(const char* name, Where where, const char* path, const char* interface,
            const char* member, const char* types, Arguments... arguments) {
  return {name, where, [=](sd_bus* bus, const std::string& to) {
            return Stranger::sendSignal(bus, to, path, interface, member, types, arguments...);
          }};
}

/// A call that wants no answer.
template <class... Arguments>
Kind call(const char* name, const char* path, const char* interface, const char* member,
          const char* types, Arguments... arguments) {
  return {name, Where::sessionBus, [=](sd_bus* bus, const std::string& to) {
            sd_bus_message* message = nullptr;
            const bool isSent = sd_bus_message_new_method_call(bus, &message, to.c_str(), path,
                                                               interface, member) >= 0 &&
                                sd_bus_message_append(message, types, arguments...) >= 0 &&
                                sd_bus_send(bus, message, nullptr) >= 0;
            sd_bus_message_unref(message);
            return isSent;
          }};
}

std::vector<Kind> kinds() {
  static int number = 0;
  return {
      signal("sleep", Where::systemBus, kLogindPath, kManager, "PrepareForSleep", "b", 1),
      signal("wake", Where::systemBus, kLogindPath, kManager, "PrepareForSleep", "b", 0),
      signal("logind gone", Where::systemBus, kBusPath, kBusName, "NameOwnerChanged", "sss",
             kLogind, ":1.0", ""),
      signal("logind replaced", Where::systemBus, kBusPath, kBusName, "NameOwnerChanged", "sss",
             kLogind, ":1.0", ":1.1"),
      signal("UPower gone", Where::systemBus, kBusPath, kBusName, "NameOwnerChanged", "sss",
             kUPower, ":1.0", ""),
      signal("on battery", Where::systemBus, kUPowerPath, kPropertiesInterface, "PropertiesChanged",
             "sa{sv}as", kUPower, 1, "OnBattery", "b", 1, 0),
      signal("battery empty", Where::systemBus, kBattery, kPropertiesInterface, "PropertiesChanged",
             "sa{sv}as", kDevice, 3, "Type", "u", 2U, "IsPresent", "b", 1, "Percentage", "d", 1.0,
             0),
      signal("properties to be asked for", Where::systemBus, kUPowerPath, kPropertiesInterface,
             "PropertiesChanged", "sa{sv}as", kUPower, 0, 1, "OnBattery"),
      signal("power saving", Where::systemBus, kProfilesPath, kPropertiesInterface,
             "PropertiesChanged", "sa{sv}as", kProfiles, 1, "ActiveProfile", "s", "power-saver", 0),
      {"properties without end", Where::systemBus,
       [](sd_bus* bus, const std::string& to) {
         const std::string key = "Key" + std::to_string(++number);
         const std::string text(1000, 'x');
         return Stranger::sendSignal(bus, to, kUPowerPath, kPropertiesInterface,
                                     "PropertiesChanged", "sa{sv}as", kUPower, 1, key.c_str(), "s",
                                     text.c_str(), 0);
       }},
      signal("own name lost", Where::systemBus, kBusPath, kBusName, "NameLost", "s", kLogind),
      signal("watcher gone", Where::sessionBus, kBusPath, kBusName, "NameOwnerChanged", "sss",
             kWatcher, ":1.0", ""),
      signal("watcher come", Where::sessionBus, kBusPath, kBusName, "NameOwnerChanged", "sss",
             kWatcher, "", ":1.0"),
      call("call that ends the program", "/com/staylit/app", "org.freedesktop.Application",
           "ActivateAction", "sava{sv}", "quit", 0, 0),
      call("call that pauses it", "/com/staylit/app", "org.freedesktop.Application",
           "ActivateAction", "sava{sv}", "pause", 0, 0),
      call("choice in the menu", "/MenuBar", "com.canonical.dbusmenu", "Event", "isvu", 1,
           "clicked", "i", 0, 0U),
  };
}

const Kind kLarge{
    "text of eight megabytes", Where::systemBus, [](sd_bus* bus, const std::string& to) {
      const std::string text(8'000'000, 'x');
      return Stranger::sendSignal(bus, to, kUPowerPath, kPropertiesInterface, "PropertiesChanged",
                                  "sa{sv}as", kUPower, 1, "OnBattery", "s", text.c_str(), 0);
    }};

class ForgedMessages {
 public:
  /// Prepares the machine. Returns why that is not possible; absent on success.
  std::optional<std::string> begin() {
    if (const auto obstacle = testing::OwnMachine::obstacle()) return obstacle;
    if (const auto obstacle = Stranger::obstacle()) return obstacle;
    if (!machine_.begin(Policy::system, Policy::everybody)) return "logind does not answer";
    return std::nullopt;
  }

  Outcome run(Effort effort) {
    FakePropertyService upower(machine_.systemDaemon->address(), kUPower);
    upower.set(kUPowerPath, kUPower, {{"OnBattery", false}});
    upower.set(kBattery, kDevice, {{"Type", 0U}, {"IsPresent", false}, {"Percentage", 0.0}});
    FakePropertyService profiles(machine_.systemDaemon->address(), kProfiles);
    profiles.set(kProfilesPath, kProfiles, {{"ActiveProfile", std::string("balanced")}});
    machine_.writeSettings(
        "graceSeconds = 30\nsustainSeconds = 1\ncpuThresholdPercent = 1e9\n"
        "diskThresholdKBps = 1e9\nnetThresholdKBps = 1e9\n");
    const ChildProgram worker = machine_.workAs("aider", {"cpu"});
    const ChildProgram staylit = machine_.start();
    if (!holds()) return outcome_;
    program_ = staylit.pid();
    before_ = machine_.inhibitors();
    const long memoryKB = residentKB(program_);
    for (const Kind& kind : kinds())
      sendOften(kind, effort.quick ? 200 : 10'000);
    sendOften(kLarge, effort.quick ? 5 : 100);
    sendAtFullRate(effort.quick ? 2s : 60s);
    const long growthKB = residentKB(program_) - memoryKB;
    if (growthKB > kMostGrowthKB) {
      outcome_.findings.push_back("the memory grew by " + std::to_string(growthKB) + " KB");
    }
    outcome_.measured += "; the memory grew by " + std::to_string(growthKB) + " KB";
    return outcome_;
  }

 private:
  bool holds() {
    const bool isHeld = testing::OwnMachine::eventually(
        [this] { return machine_.holdReasons() == std::vector<std::string>{"Aider is working"}; },
        60s);
    if (!isHeld) outcome_.findings.emplace_back("no hold a minute after work began");
    return isHeld;
  }

  /// The unique name of the program on the bus at `address`; empty when it is not there.
  std::string nameOn(const std::string& address) const {
    sd_bus* bus = Stranger::connect(address);
    char** names = nullptr;
    std::string found;
    if (bus == nullptr || sd_bus_list_names(bus, &names, nullptr) < 0) return "";
    for (char** name = names; *name != nullptr; ++name) {
      sd_bus_creds* credentials = nullptr;
      pid_t pid = 0;
      if (**name == ':' && sd_bus_get_name_creds(bus, *name, SD_BUS_CREDS_PID, &credentials) >= 0 &&
          sd_bus_creds_get_pid(credentials, &pid) >= 0 && pid == program_) {
        found = *name;
      }
      sd_bus_creds_unref(credentials);
      std::free(*name);
    }
    std::free(names);
    sd_bus_flush_close_unref(bus);
    return found;
  }

  [[nodiscard]] std::string addressOf(Where where) const {
    return where == Where::systemBus ? machine_.systemDaemon->address()
                                     : machine_.sessionDaemon->address();
  }

  void sendOften(const Kind& kind, int count) {
    const std::string to = nameOn(addressOf(kind.where));
    watch(kind.name, kind.where, to, [&](sd_bus* bus) {
      for (int sent = 0; sent < count; ++sent) {
        if (!kind.send(bus, to) || (sent % 100 == 0 && sd_bus_flush(bus) < 0)) return false;
      }
      return true;
    });
    outcome_.runs += count;
  }

  /// Sends all kinds for the system bus in turn, as fast as the bus takes them.
  void sendAtFullRate(std::chrono::seconds length) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) < 0) return;
    const platform::Descriptor reading(ends[0]);
    const platform::Descriptor writing(ends[1]);
    const std::string to = nameOn(addressOf(Where::systemBus));
    watch("all at full rate", Where::systemBus, to, [&](sd_bus* bus) {
      std::int64_t sent = 0;
      for (const auto end = Steady::now() + length; Steady::now() < end;) {
        for (const Kind& kind : kinds()) {
          if (kind.where != Where::systemBus) continue;
          if (!kind.send(bus, to)) return false;
          ++sent;
        }
        if (sd_bus_flush(bus) < 0) return false;
      }
      return ::write(writing.get(), &sent, sizeof sent) == sizeof sent;
    });
    std::int64_t sent = 0;
    // The stranger may have ended without telling its number of messages.
    ::fcntl(reading.get(), F_SETFL, O_NONBLOCK);
    if (::read(reading.get(), &sent, sizeof sent) != sizeof sent) return;
    outcome_.runs += sent;
    outcome_.measured = std::to_string(sent / length.count()) + " messages a second at full rate";
  }

  /// Compares the locks as long as the stranger sends, and once more when the program has handled
  /// all messages.
  void watch(const std::string& kind, Where where, const std::string& to,
             const std::function<bool(sd_bus*)>& act) {
    const std::string address = addressOf(where);
    const ChildProgram stranger = Stranger::start(address, act);
    siginfo_t end{};
    bool isChanged = false;
    while (::waitid(P_PID, static_cast<id_t>(stranger.pid()), &end, WEXITED | WNOWAIT | WNOHANG) ==
               0 &&
           end.si_pid == 0) {
      isChanged = isChanged || machine_.inhibitors() != before_;
      std::this_thread::sleep_for(2ms);
    }
    if (end.si_status != 0) outcome_.findings.push_back(kind + ": the stranger could not send");
    if (!answers(address, to)) outcome_.findings.push_back(kind + ": the program does not answer");
    isChanged = isChanged || machine_.inhibitors() != before_;
    if (isChanged) outcome_.findings.push_back(kind + ": the locks changed");
  }

  /// Whether the program answers, even if only with a refusal. Then it has handled all messages
  /// before.
  static bool answers(const std::string& address, const std::string& to) {
    sd_bus* bus = Stranger::connect(address);
    sd_bus_error error{};
    const int result = sd_bus_call_method(bus, to.c_str(), "/", "org.freedesktop.DBus.Peer", "Ping",
                                          &error, nullptr, "");
    const bool isAnswered =
        result >= 0 || sd_bus_error_has_name(&error, SD_BUS_ERROR_ACCESS_DENIED) > 0;
    sd_bus_error_free(&error);
    sd_bus_flush_close_unref(bus);
    return isAnswered;
  }

  testing::OwnMachine machine_;
  Outcome outcome_;
  pid_t program_ = 0;
  std::optional<std::vector<std::string>> before_;
};

}  // namespace

Outcome forgedMessages(Effort effort) {
  ForgedMessages campaign;
  if (const auto obstacle = campaign.begin()) return notPossible(*obstacle);
  return campaign.run(effort);
}

}  // namespace staylit::campaign

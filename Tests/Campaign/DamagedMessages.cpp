// Sends damaged messages over a real bus: calls to the menu, the item, the application and the
// status, answers for the lists of inhibitors and for `--status`, and properties. Their values are
// random, and have the right types or any others. In a build with the sanitizers, what the
// sanitizers say is a finding too.

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Linux/Bus/RemoteProperties.h"
#include "Platform/Linux/Sleep/InhibitorList.h"
#include "Staylit/Desktop/Display/Display.h"
#include "Staylit/Desktop/Session/ApplicationService.h"
#include "Staylit/Desktop/Status/StatusMessages.h"
#include "Staylit/Desktop/Status/StatusObject.h"
#include "Staylit/Desktop/StatusItem/StatusNotifierItem.h"
#include "Tests/Campaign/Campaigns.h"
#include "Tests/Campaign/PrivateBuses.h"
#include "Tests/Campaign/RandomMessage.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/RunUntil.h"
#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Shell/Support/FakeMenu.h"

namespace staylit::campaign {
namespace {

using platform::testing::BusService;
using platform::testing::ScopedEnvironment;

// Calls.

struct Method {
  const char* path;
  const char* interface;
  const char* name;
  const char* signature;
};

constexpr const char* kMenu = "com.canonical.dbusmenu";
constexpr const char* kItem = "org.kde.StatusNotifierItem";
constexpr const char* kApplication = "org.freedesktop.Application";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

constexpr Method kMenuMethods[] = {{"/MenuBar", kMenu, "GetLayout", "iias"},
                                   {"/MenuBar", kMenu, "GetGroupProperties", "aias"},
                                   {"/MenuBar", kMenu, "GetProperty", "is"},
                                   {"/MenuBar", kMenu, "Event", "isvu"},
                                   {"/MenuBar", kMenu, "EventGroup", "a(isvu)"},
                                   {"/MenuBar", kMenu, "AboutToShow", "i"},
                                   {"/MenuBar", kMenu, "AboutToShowGroup", "ai"},
                                   {"/MenuBar", kProperties, "Get", "ss"},
                                   {"/MenuBar", kProperties, "Set", "ssv"},
                                   {"/StatusNotifierItem", kItem, "Activate", "ii"},
                                   {"/StatusNotifierItem", kItem, "Scroll", "is"},
                                   {"/StatusNotifierItem", kItem, "ProvideXdgActivationToken", "s"},
                                   {"/StatusNotifierItem", kProperties, "GetAll", "s"}};

constexpr Method kApplicationMethods[] = {
    {"/com/staylit/app", kApplication, "Activate", "a{sv}"},
    {"/com/staylit/app", kApplication, "Open", "asa{sv}"},
    {"/com/staylit/app", kApplication, "ActivateAction", "sava{sv}"}};

constexpr Method kStatusMethods[] = {
    {StatusInterface::kPath, kProperties, "Get", "ss"},
    {StatusInterface::kPath, kProperties, "GetAll", "s"},
    {StatusInterface::kPath, kProperties, "Set", "ssv"},
    {StatusInterface::kPath, StatusInterface::kName, "State", "s"}};

/// Calls `methods` from a connection and a thread of its own, and waits for an answer after each
/// hundred calls.
class Caller {
 public:
  Caller(const std::string& address, std::string destination, std::vector<Method> methods,
         std::int64_t count)
      : destination_(std::move(destination)), methods_(std::move(methods)), count_(count) {
    if (sd_bus_new(&bus_) < 0 || sd_bus_set_address(bus_, address.c_str()) < 0 ||
        sd_bus_set_bus_client(bus_, 1) < 0 || sd_bus_start(bus_) < 0) {
      std::abort();
    }
    thread_ = std::thread([this] { call(); });
  }
  ~Caller() {
    thread_.join();
    sd_bus_flush_close_unref(bus_);
  }
  Caller(const Caller&) = delete;
  Caller& operator=(const Caller&) = delete;

  [[nodiscard]] bool isDone() const { return isDone_; }
  [[nodiscard]] std::int64_t sent() const { return sent_; }
  /// Whether every hundredth call had an answer.
  [[nodiscard]] bool wasAnswered() const { return wasAnswered_; }

 private:
  void call() {
    Random random(7);
    while (sent_ < count_ && wasAnswered_) {
      for (int number = 0; number < 100; ++number)
        send(methods_[below(random, methods_.size())], random);
      wasAnswered_ = ping();
    }
    isDone_ = true;
  }

  void send(const Method& method, Random& random) {
    sd_bus_message* message = nullptr;
    if (sd_bus_message_new_method_call(bus_, &message, destination_.c_str(), method.path,
                                       method.interface, method.name) < 0) {
      return;
    }
    const bool isRight = below(random, 4) != 0;
    appendRandom(message, isRight ? method.signature : randomSignature(random), random);
    sd_bus_message_set_expect_reply(message, below(random, 2) == 0 ? 1 : 0);
    if (sd_bus_send(bus_, message, nullptr) >= 0) ++sent_;
    sd_bus_message_unref(message);
  }

  bool ping() {
    const int result = sd_bus_call_method(
        bus_, destination_.c_str(), "/", "org.freedesktop.DBus.Peer", "Ping", nullptr, nullptr, "");
    while (sd_bus_process(bus_, nullptr) > 0) {
    }
    return result >= 0;
  }

  std::string destination_;
  std::vector<Method> methods_;
  std::int64_t count_;
  sd_bus* bus_ = nullptr;
  std::atomic<std::int64_t> sent_ = 0;
  std::atomic<bool> isDone_ = false;
  std::atomic<bool> wasAnswered_ = true;
  std::thread thread_;
};

/// Calls `methods` `count` times and adds the result to `outcome`.
void callAll(PrivateBuses& buses, const std::vector<Method>& methods, std::int64_t count,
             const std::string& what, Outcome& outcome) {
  const char* name = nullptr;
  if (sd_bus_get_unique_name(buses.sessionBus.handle(), &name) < 0) {
    outcome.findings.push_back("There was no bus for " + what + ".");
    return;
  }
  const Caller caller(buses.sessionDaemon.address(), name, methods, count);
  while (!caller.isDone())
    sd_event_run(buses.loop.handle(), 10'000);
  outcome.runs += caller.sent();
  if (!caller.wasAnswered()) outcome.findings.push_back("No more answers by " + what + ".");
}

void callMenu(PrivateBuses& buses, std::int64_t count, Outcome& outcome) {
  testing::FakeMenu menu;
  menu.menu = testing::smallMenu();
  StatusNotifierItem item(buses.loop, buses.sessionBus, menu, StatusIcons{});
  item.show({"cup.and.saucer.fill", "Staylit", false, "Awake for Aider"});
  callAll(buses, {std::begin(kMenuMethods), std::end(kMenuMethods)}, count, "the menu", outcome);
}

void callApplication(PrivateBuses& buses, std::int64_t count, Outcome& outcome) {
  const ScopedEnvironment x("DISPLAY", std::nullopt);
  const ScopedEnvironment wayland("WAYLAND_DISPLAY", std::nullopt);
  ApplicationService service(buses.loop, buses.sessionBus,
                             [](MenuItem::Action) { return std::string(); });
  service.claim({"", false}, [] {});
  callAll(buses, {std::begin(kApplicationMethods), std::end(kApplicationMethods)}, count,
          "the application", outcome);
  const char* display = std::getenv("DISPLAY");
  if (display && *display != ':') outcome.findings.push_back("A display of elsewhere was taken.");
  Display::forget();
}

void callStatus(PrivateBuses& buses, std::int64_t count, Outcome& outcome) {
  tidewell::FakePorts ports;
  StaylitEngine engine(ports.ports);
  StatusReporter reporter(engine, ports.ports);
  const StatusObject object(buses.sessionBus, reporter);
  callAll(buses, {std::begin(kStatusMethods), std::end(kStatusMethods)}, count, "the status",
          outcome);
}

// Answers.

/// Answers every call with random values, of the right type or of any other.
class RandomService {
 public:
  RandomService(const std::string& address, std::vector<std::string> names)
      : service_(address, std::move(names), [this](sd_bus_message* call) { answer(call); }) {}

  [[nodiscard]] std::int64_t answered() const { return answered_; }
  BusService& service() { return service_; }

 private:
  static std::string_view rightSignature(std::string_view member) {
    if (member == "ListInhibitors") return "a(ssssuu)";
    if (member == "ListInhibitions") return "a(ss)";
    if (member == "GetInhibitors") return "ao";
    if (member == "GetAppId" || member == "GetReason") return "s";
    if (member == "GetFlags") return "u";
    return member == "GetAll" ? "a{sv}" : "v";
  }

  void answer(sd_bus_message* call) {
    ++answered_;
    if (below(random_, 50) == 0) {
      sd_bus_reply_method_errorf(call, SD_BUS_ERROR_FAILED, "%s", randomText(random_).c_str());
      return;
    }
    sd_bus_message* reply = nullptr;
    if (sd_bus_message_new_method_return(call, &reply) < 0) return;
    const bool isRight = below(random_, 3) != 0;
    const std::string signature(isRight ? rightSignature(sd_bus_message_get_member(call)) : "");
    appendRandom(reply, isRight ? signature : randomSignature(random_), random_);
    if (sd_bus_send(nullptr, reply, nullptr) < 0) {
      sd_bus_reply_method_errorf(call, SD_BUS_ERROR_FAILED, "no reply could be made");
    }
    sd_bus_message_unref(reply);
  }

  Random random_{11};
  std::atomic<std::int64_t> answered_ = 0;
  BusService service_;
};

/// Adds a finding when `text` is not clean, or too long.
void checkText(const std::string& text, const std::string& what, Outcome& outcome) {
  const std::string harm = text.size() > 5000 ? "more than anybody reads" : harmIn(text);
  if (!harm.empty() && outcome.findings.size() < 20) {
    outcome.findings.push_back("In " + what + " there was " + harm + ".");
  }
}

void readLists(PrivateBuses& buses, std::int64_t count, Outcome& outcome) {
  const RandomService logind(buses.systemDaemon.address(), {"org.freedesktop.login1"});
  const RandomService desktop(
      buses.sessionDaemon.address(),
      {"org.gnome.SessionManager", "org.kde.Solid.PowerManagement.PolicyAgent",
       "org.freedesktop.PowerManagement"});
  const auto answered = [&] { return logind.answered() + desktop.answered(); };
  const auto named = std::make_shared<platform::NamedHolders>();
  platform::InhibitorList list(buses.systemBus, buses.sessionBus, named);
  std::int64_t before = -1;
  // The loop ends when the lists are not asked for any more.
  for (int idle = 0; answered() < count && idle < 1000;) {
    if (const auto holders = list.assertionsByProcess()) {
      for (const auto& [pid, assertions] : *holders) {
        checkText(named->applicationId(static_cast<std::int32_t>(pid)).value_or(""),
                  "a holder's id", outcome);
        for (const auto& assertion : assertions)
          checkText(assertion.reason, "a reason", outcome);
      }
    }
    sd_event_run(buses.loop.handle(), 0);
    idle = answered() == before ? idle + 1 : 0;
    before = answered();
  }
  outcome.runs += answered();
  if (answered() < count) outcome.findings.push_back("The lists were asked no more.");
}

void readProperties(PrivateBuses& buses, std::int64_t count, Outcome& outcome) {
  RandomService service(buses.systemDaemon.address(), {"org.freedesktop.UPower"});
  Random random(13);
  std::int64_t signals = 0;
  // Each round asks once and gets fifty signals. The last condition ends the loop when the service
  // is gone.
  for (std::int64_t round = 0; service.answered() + signals < count && round < count; ++round) {
    platform::RemoteProperties properties(buses.systemBus, "org.freedesktop.UPower",
                                          "/org/freedesktop/UPower", "org.freedesktop.UPower",
                                          {"OnBattery", "Percentage", "label"});
    properties.read();
    service.service().perform([&](sd_bus* bus) {
      for (int number = 0; number < 50; ++number) {
        sd_bus_message* signal = nullptr;
        if (sd_bus_message_new_signal(bus, &signal, "/org/freedesktop/UPower", kProperties,
                                      "PropertiesChanged") < 0) {
          continue;
        }
        appendRandom(signal, below(random, 3) != 0 ? "sa{sv}as" : randomSignature(random), random);
        if (sd_bus_send(bus, signal, nullptr) >= 0) ++signals;
        sd_bus_message_unref(signal);
      }
    });
    while (sd_event_run(buses.loop.handle(), 1000) > 0) {
    }
    properties.read();
  }
  outcome.runs += service.answered() + signals;
  if (service.answered() + signals < count) outcome.findings.push_back("No more properties came.");
}

constexpr std::pair<const char*, const char*> kStatusProperties[] = {
    {"Summary", "s"},        {"Reason", "s"},
    {"Since", "x"},          {"ReleasesIn", "x"},
    {"Names", "as"},         {"Services", "a(sx)"},
    {"Busy", "a(sssdddd)"},  {"Candidates", "a(sssdddd)"},
    {"SustainSeconds", "x"}, {"Asking", "as"},
    {"OnAC", "b"},           {"HasBattery", "b"},
    {"BatteryPercent", "x"}, {"ResumesAt", "x"},
    {"LowPowerMode", "b"}};

/// Answers with the properties of a status, most of which have the right type.
void replyWithStatus(sd_bus_message* call, Random& random) {
  sd_bus_message* reply = nullptr;
  if (sd_bus_message_new_method_return(call, &reply) < 0) return;
  sd_bus_message_open_container(reply, 'a', "{sv}");
  sd_bus_message_append(reply, "{sv}", "State", "s", "holding");
  for (const auto& [name, type] : kStatusProperties) {
    const bool isRight = below(random, 8) != 0;
    sd_bus_message_open_container(reply, 'e', "sv");
    sd_bus_message_append(reply, "s", name);
    if (isRight) sd_bus_message_open_container(reply, 'v', type);
    appendRandom(reply, isRight ? type : "v", random);
    if (isRight) sd_bus_message_close_container(reply);
    sd_bus_message_close_container(reply);
  }
  sd_bus_message_close_container(reply);
  if (sd_bus_send(nullptr, reply, nullptr) < 0) {
    sd_bus_reply_method_errorf(call, SD_BUS_ERROR_FAILED, "no reply could be made");
  }
  sd_bus_message_unref(reply);
}

/// As `staylit --status` reads it, from whoever owns the name.
void readStatuses(PrivateBuses& buses, std::int64_t count, Outcome& outcome) {
  // The program's own name is still that of the connection which has served the application.
  constexpr const char* kOther = "org.example.Status";
  Random random(17);
  std::atomic<std::int64_t> answered = 0;
  const BusService service(buses.sessionDaemon.address(), {kOther}, [&](sd_bus_message* call) {
    ++answered;
    replyWithStatus(call, random);
  });
  std::int64_t understood = 0;
  for (std::int64_t asked = 0; asked < count; ++asked) {
    const auto reply =
        buses.sessionBus.call({kOther, StatusInterface::kPath, kProperties, "GetAll"});
    StatusReport report;
    if (!reply || !readStatus(reply.message.get(), report)) continue;
    ++understood;
    std::vector<std::string> texts = report.lines({});
    texts.push_back(report.line());
    texts.push_back(report.json({}));
    for (const std::string& text : texts) {
      const std::string harm = harmIn(text);
      if (!harm.empty() && outcome.findings.size() < 20) {
        outcome.findings.push_back("In a status there was " + harm + ".");
      }
    }
  }
  outcome.runs += answered;
  if (understood == 0) outcome.findings.push_back("No status was ever understood.");
}

}  // namespace

Outcome damagedMessages(Effort effort) {
  Outcome outcome;
  const std::int64_t count = effort.quick ? 2'000 : 1'000'000;
  PrivateBuses buses;
  buses.systemBus.connect();
  buses.sessionBus.connect();
  callMenu(buses, count, outcome);
  callApplication(buses, count, outcome);
  callStatus(buses, count, outcome);
  // There are four lists, which are read in turn.
  readLists(buses, 4 * count, outcome);
  readProperties(buses, count, outcome);
  readStatuses(buses, count, outcome);
  outcome.measured = std::to_string(count) + " of each kind";
  return outcome;
}

}  // namespace staylit::campaign

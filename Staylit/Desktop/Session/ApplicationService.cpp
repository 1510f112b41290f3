#include "Staylit/Desktop/Session/ApplicationService.h"

#include <cstdlib>
#include <string>
#include <utility>

#include "Platform/Linux/Bus/MessageReading.h"
#include "Staylit/Desktop/Display/Display.h"
#include "Staylit/Desktop/Session/ActivationToken.h"
#include "Tidewell/ForeignText.h"
#include "Tidewell/Log.h"

namespace staylit {
namespace {

using platform::BusMethod;
using platform::BusReply;
using Service = ApplicationService;

constexpr BusMethod kRequestName{"org.freedesktop.DBus", "/org/freedesktop/DBus",
                                 "org.freedesktop.DBus", "RequestName"};
constexpr BusMethod kGetNameOwner{"org.freedesktop.DBus", "/org/freedesktop/DBus",
                                  "org.freedesktop.DBus", "GetNameOwner"};

// Numbers of the bus's own protocol.
constexpr std::uint32_t kDoNotQueue = 4;
constexpr std::uint32_t kExists = 3;

/// A busy owner may take a moment, but an owner that hangs must not keep the program from starting.
constexpr tidewell::Seconds kPatience{5};

platform::Bus::Arguments nameWith(std::uint32_t flags) {
  return [flags](sd_bus_message* call) {
    return sd_bus_message_append(call, "su", Service::kName, flags);
  };
}

std::string startupToken() {
  const char* token = std::getenv("XDG_ACTIVATION_TOKEN");
  if (!token || !*token) token = std::getenv("DESKTOP_STARTUP_ID");
  return tidewell::cleaned(token ? token : "");
}

/// A key of our own. It says where the display is, for a program that was started without one.
constexpr const char* kDisplayKey = "com.staylit.display";

int appendDisplay(sd_bus_message* call) {
  int result = sd_bus_message_open_container(call, 'e', "sv");
  if (result >= 0) result = sd_bus_message_append(call, "s", kDisplayKey);
  if (result >= 0) result = sd_bus_message_open_container(call, 'v', "as");
  if (result >= 0) result = sd_bus_message_open_container(call, 'a', "s");
  for (const std::string& variable : Display::variables()) {
    if (result < 0) return result;
    result = sd_bus_message_append(call, "s", tidewell::cleaned(variable).c_str());
  }
  for (int level = 0; level < 3 && result >= 0; ++level)
    result = sd_bus_message_close_container(call);
  return result;
}

/// Appends what the window system gave this start, so that the first start can use it.
int appendPlatformData(sd_bus_message* call) {
  const std::string token = startupToken();
  int result = sd_bus_message_open_container(call, 'a', "{sv}");
  for (const char* key : {"activation-token", "desktop-startup-id"}) {
    if (result >= 0) result = sd_bus_message_append(call, "{sv}", key, "s", token.c_str());
  }
  if (result >= 0) result = appendDisplay(call);
  return result < 0 ? result : sd_bus_message_close_container(call);
}

/// The owner's own words, where it has some.
std::string refusalIn(const BusReply& reply) {
  const sd_bus_error* error =
      reply.message ? sd_bus_message_get_error(reply.message.get()) : nullptr;
  return error && error->message ? tidewell::cleaned(error->message) : reply.errorName;
}

int readPlatformData(sd_bus_message* call) {
  std::string token;
  std::vector<std::string> display;
  const int result = platform::readEntries(call, [&](const std::string& key) {
    if (key == "activation-token") return platform::readTextValue(call, token);
    return key == kDisplayKey ? platform::readTextsValue(call, display) : 0;
  });
  if (result < 0) return result;
  if (!token.empty()) ActivationToken::set(token);
  Display::learn(display);
  return result;
}

}  // namespace

const sd_bus_vtable ApplicationService::kTable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Activate", "a{sv}", "", activate, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Open", "asa{sv}", "", open, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("ActivateAction", "sava{sv}", "", activateAction, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

std::optional<MenuItem::Action> ApplicationService::action(std::string_view name) {
  if (name == "pause") return MenuItem::Action::togglePause;
  if (name == "choose-apps") return MenuItem::Action::openApps;
  if (name == "settings") return MenuItem::Action::openSettings;
  if (name == "quit") return MenuItem::Action::terminate;
  return std::nullopt;
}

ApplicationService::ApplicationService(platform::EventLoop& loop, platform::Bus& sessionBus,
                                       Perform perform)
    : loop_(loop),
      bus_(sessionBus),
      perform_(std::move(perform)),
      object_(sessionBus, {kPath, kInterface}, kTable, this) {}

ApplicationService::Claim ApplicationService::claim(const Request& request,
                                                    std::function<void()> leave) {
  for (int attempt = 0; attempt < 3; ++attempt) {
    const bool isConnected = bus_.connect() >= 0;
    // The object is offered before the name is taken: whoever finds the name must find the object.
    object_.offer();
    std::uint32_t outcome = 0;
    const BusReply reply =
        isConnected ? bus_.call(kRequestName, nameWith(kDoNotQueue)) : BusReply{-1, {}, {}};
    if (reply) sd_bus_message_read(reply.message.get(), "u", &outcome);
    if (outcome != kExists) {
      keepName();
      return Claim::first;
    }
    if (request.isBackground) return Claim::second;
    const Answer answer = findOwner() ? askOwner(request) : Answer::gone;
    if (answer == Answer::done) return Claim::second;
    if (answer == Answer::none) break;
  }
  return goOnBeside(request, std::move(leave));
}

ApplicationService::Claim ApplicationService::goOnBeside(const Request& request,
                                                         std::function<void()> leave) {
  tidewell::Log::error("another Staylit runs in this session and does not answer");
  if (!request.action.empty()) {
    refusal_ = "the Staylit that runs does not answer";
    return Claim::second;
  }
  leave_ = std::move(leave);
  keepName();
  return Claim::beside;
}

bool ApplicationService::findOwner() {
  const BusReply reply = bus_.call(
      kGetNameOwner, [](sd_bus_message* call) { return sd_bus_message_append(call, "s", kName); });
  const char* owner = nullptr;
  if (!reply || sd_bus_message_read(reply.message.get(), "s", &owner) < 0) return false;
  owner_ = owner;
  return true;
}

ApplicationService::Answer ApplicationService::askOwner(const Request& request) {
  if (!ask(request)) return Answer::gone;
  const auto limit = loop_.scheduleRepeating(kPatience, [this] { loop_.handOver(); });
  loop_.run();
  // If the loop is stopping and there is no answer, somebody wants this program to end.
  return answer_.value_or(loop_.isStopping() ? Answer::done : Answer::none);
}

bool ApplicationService::ask(const Request& request) {
  answer_.reset();
  const bool isPlain = request.action.empty();
  question_ = bus_.callAsync(
      {owner_.c_str(), kPath, kInterface, isPlain ? "Activate" : "ActivateAction"},
      [&](sd_bus_message* message) {
        const int result =
            isPlain ? 0 : sd_bus_message_append(message, "sav", request.action.c_str(), 0);
        return result < 0 ? result : appendPlatformData(message);
      },
      [this](const BusReply& reply) { answered(reply); });
  return static_cast<bool>(question_);
}

void ApplicationService::answered(const BusReply& reply) {
  const bool isGone = reply.errorName == SD_BUS_ERROR_NAME_HAS_NO_OWNER ||
                      reply.errorName == SD_BUS_ERROR_SERVICE_UNKNOWN || !bus_.handle();
  const bool isSilent = reply.errorName == SD_BUS_ERROR_NO_REPLY;
  if (!reply && !isGone && !isSilent) {
    refusal_ = refusalIn(reply);
  }
  if (!leave_) {
    answer_ = isGone || isSilent ? Answer::gone : Answer::done;
    loop_.handOver();
  } else if (isSilent) {
    ask({});
  } else if (!isGone) {
    leave_();
  }
}

void ApplicationService::keepName() {
  // The name is requested on every new connection, and waits in the queue if it has another owner.
  connection_ = bus_.watchConnection([this](bool) {
    request_ = bus_.callAsync(kRequestName, nameWith(0), [](const BusReply&) {});
  });
}

int ApplicationService::obey(sd_bus_message* call, MenuItem::Action action) {
  constexpr int kIsTaken = 1;
  // The end drops messages that are not sent yet, so its answer goes first.
  if (action == MenuItem::Action::terminate) sd_bus_reply_method_return(call, "");
  // Work that is posted is copied, and a message has one owner.
  const auto kept = std::make_shared<platform::BusMessage>(sd_bus_message_ref(call));
  loop_.async([service = self_.make(), kept, action] {
    if (!service) return;
    const std::string obstacle = service->perform_(action);
    if (action == MenuItem::Action::terminate) return;
    if (obstacle.empty()) {
      sd_bus_reply_method_return(kept->get(), "");
    } else {
      sd_bus_reply_method_errorf(kept->get(), SD_BUS_ERROR_FAILED, "%s", obstacle.c_str());
    }
  });
  return kIsTaken;
}

int ApplicationService::activate(sd_bus_message* call, void* data, sd_bus_error* /*error*/) {
  if (const int result = readPlatformData(call); result < 0) return result;
  return static_cast<ApplicationService*>(data)->obey(call, MenuItem::Action::openApps);
}

int ApplicationService::open(sd_bus_message* call, void* data, sd_bus_error* error) {
  // The program does not open files, but it can come to the front.
  if (const int result = sd_bus_message_skip(call, "as"); result < 0) return result;
  return activate(call, data, error);
}

int ApplicationService::activateAction(sd_bus_message* call, void* data, sd_bus_error* error) {
  const char* name = nullptr;
  int result = sd_bus_message_read(call, "s", &name);
  if (result >= 0) result = sd_bus_message_skip(call, "av");
  if (result >= 0) result = readPlatformData(call);
  if (result < 0) return result;
  const std::optional<MenuItem::Action> wanted = action(name);
  if (!wanted) return sd_bus_error_setf(error, SD_BUS_ERROR_INVALID_ARGS, "no action '%s'", name);
  return static_cast<ApplicationService*>(data)->obey(call, *wanted);
}

}  // namespace staylit

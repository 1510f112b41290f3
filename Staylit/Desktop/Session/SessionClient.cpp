#include "Staylit/Desktop/Session/SessionClient.h"

#include <cstdlib>
#include <utility>

namespace staylit {
namespace {

using platform::BusReply;

constexpr const char* kManager = "org.gnome.SessionManager";
constexpr const char* kPrivate = "org.gnome.SessionManager.ClientPrivate";
constexpr const char* kAutostartId = "DESKTOP_AUTOSTART_ID";
constexpr platform::BusMethod kRegisterClient{kManager, "/org/gnome/SessionManager", kManager,
                                              "RegisterClient"};

/// The variable belongs to the program that the manager started, so no child process may inherit
/// it.
std::string takeStartupId() {
  const char* id = std::getenv(kAutostartId);
  std::string result = id ? id : "";
  ::unsetenv(kAutostartId);
  return result;
}

}  // namespace

SessionClient::SessionClient(platform::Bus& sessionBus, std::function<void()> end)
    : bus_(sessionBus), end_(std::move(end)), startupId_(takeStartupId()) {
  manager_ = bus_.watchName(kManager, [this](bool owned) {
    registration_.reset();
    signals_.clear();
    if (owned) registerWithManager();
  });
}

void SessionClient::registerWithManager() {
  registration_ = bus_.callAsync(
      kRegisterClient,
      [this](sd_bus_message* call) {
        return sd_bus_message_append(call, "ss", "com.staylit.app", startupId_.c_str());
      },
      [this](const BusReply& reply) {
        const char* path = nullptr;
        if (reply && sd_bus_message_read(reply.message.get(), "o", &path) >= 0) becameClient(path);
      });
}

void SessionClient::becameClient(const std::string& path) {
  path_ = path;
  const auto on = [this](const char* member, std::function<void()> action) {
    signals_.push_back(bus_.subscribe({kManager, path_, kPrivate, member},
                                      [action = std::move(action)](sd_bus_message*) { action(); }));
  };
  on("QueryEndSession", [this] { agree(); });
  on("EndSession", [this] {
    agree();
    end_();
  });
  on("Stop", [this] { end_(); });
}

void SessionClient::agree() {
  // The manager gets its answer before the program ends, because ending drops messages that are not
  // sent yet.
  bus_.call({kManager, path_.c_str(), kPrivate, "EndSessionResponse"},
            [](sd_bus_message* call) { return sd_bus_message_append(call, "bs", 1, ""); });
}

}  // namespace staylit

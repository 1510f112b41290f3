#include "Staylit/Desktop/Session/LoginSession.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

namespace staylit {
namespace {

using Text = std::unique_ptr<char, decltype(&std::free)>;

bool isGraphical(const char* session) {
  char* raw = nullptr;
  if (sd_session_get_type(session, &raw) < 0) return false;
  const Text type(raw, &std::free);
  const std::string_view kind = type.get();
  return kind == "x11" || kind == "wayland" || kind == "mir";
}

}  // namespace

bool LoginSession::outlivesSessions(std::string_view unit) {
  return unit == "staylit.service";
}

bool LoginSession::outlivesSessions() {
  char* raw = nullptr;
  if (sd_pid_get_user_unit(0, &raw) < 0) return false;
  const Text unit(raw, &std::free);
  return outlivesSessions(unit.get());
}

std::optional<std::string> LoginSession::ownGraphical() {
  char* raw = nullptr;
  // What the user's service manager runs is outside of all sessions, but serves the session that
  // has the display.
  if (sd_pid_get_session(0, &raw) < 0 && sd_uid_get_display(::getuid(), &raw) < 0) {
    return std::nullopt;
  }
  const Text session(raw, &std::free);
  if (!isGraphical(session.get())) return std::nullopt;
  return session.get();
}

LoginSession::LoginSession(platform::EventLoop& loop, std::string id, std::function<void()> ended)
    : id_(std::move(id)), ended_(std::move(ended)) {
  sd_event_source* source = nullptr;
  if (sd_login_monitor_new("session", &monitor_) < 0) return;
  const int events = sd_login_monitor_get_events(monitor_);
  if (events < 0 || sd_event_add_io(loop.handle(), &source, sd_login_monitor_get_fd(monitor_),
                                    static_cast<std::uint32_t>(events), changed, this) < 0) {
    return;
  }
  source_ = platform::EventSource(source);
  loop.wake();
}

LoginSession::~LoginSession() {
  source_.reset();
  sd_login_monitor_unref(monitor_);
}

bool LoginSession::isOver() const {
  char* raw = nullptr;
  const int result = sd_session_get_state(id_.c_str(), &raw);
  const Text state(raw, &std::free);
  if (result < 0) return result == -ENXIO;
  return std::string_view(state.get()) == "closing";
}

int LoginSession::changed(sd_event_source* /*source*/, int /*descriptor*/, unsigned /*events*/,
                          void* data) {
  auto& self = *static_cast<LoginSession*>(data);
  sd_login_monitor_flush(self.monitor_);
  if (!self.isOver()) return 0;
  self.source_.reset();
  const std::function<void()> ended = self.ended_;
  ended();
  return 0;
}

}  // namespace staylit

#pragma once

#include <systemd/sd-event.h>
#include <systemd/sd-login.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Linux/Loop/EventLoop.h"
#include "Platform/Linux/Loop/EventSource.h"

namespace staylit {

/// Watches a login session of logind and tells when it ends. Needs no bus. Does nothing where there
/// is no logind. Main thread only; the loop must outlive it.
class LoginSession {
 public:
  /// Whether `unit` is this program's own unit of the user's service manager. That unit runs as
  /// long as the manager wants, whatever sessions come and go.
  static bool outlivesSessions(std::string_view unit);
  /// Whether this process runs in that unit.
  static bool outlivesSessions();

  /// The graphical session that this process belongs to, if any.
  static std::optional<std::string> ownGraphical();

  /// `ended` runs once, from the loop, when the session is closing or gone.
  LoginSession(platform::EventLoop& loop, std::string id, std::function<void()> ended);
  ~LoginSession();
  LoginSession(const LoginSession&) = delete;
  LoginSession& operator=(const LoginSession&) = delete;

 private:
  static int changed(sd_event_source* source, int descriptor, unsigned events, void* data);
  [[nodiscard]] bool isOver() const;

  std::string id_;
  std::function<void()> ended_;
  sd_login_monitor* monitor_ = nullptr;
  platform::EventSource source_;
};

}  // namespace staylit

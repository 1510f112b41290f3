#pragma once

#include <systemd/sd-bus.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/UnansweredCalls.h"

namespace platform::testing {

/// A service of the session that grants cookies: `Inhibit(susu)` under org.gnome.SessionManager,
/// `Inhibit(ss)` under any other name. Logs each request as a line.
class FakeSessionService {
 public:
  FakeSessionService(const std::string& address, const std::string& name)
      : isSessionManager_(name == "org.gnome.SessionManager"),
        service_(address, {name}, [this](sd_bus_message* call) { answer(call); }) {}

  std::atomic<bool> refuses = false;
  std::atomic<bool> isSilent = false;

  /// "Inhibit application|reason|flags" and "Uninhibit cookie", in order. The first cookie is 1.
  std::vector<std::string> log() {
    const std::lock_guard lock(mutex_);
    return log_;
  }
  /// The reasons of the cookies that are out.
  std::vector<std::string> held() {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> reasons;
    for (const auto& [cookie, reason] : held_)
      reasons.push_back(reason);
    return reasons;
  }
  /// Whether there was a moment without any cookie since the first was granted.
  bool hadAGap() {
    const std::lock_guard lock(mutex_);
    return hadAGap_;
  }
  /// "path interface" of every granted request.
  std::vector<std::string> targets() {
    const std::lock_guard lock(mutex_);
    return targets_;
  }

  /// Grants what was left unanswered.
  void answerLate() {
    isSilent = false;
    service_.perform(
        [this](sd_bus*) { unanswered_.answer([this](sd_bus_message* call) { answer(call); }); });
  }

 private:
  void answer(sd_bus_message* call) {
    if (isSilent) return unanswered_.keep(call);
    const std::string_view member = sd_bus_message_get_member(call);
    if (member == "Inhibit") return inhibit(call);
    if (member == "Uninhibit" || member == "UnInhibit") return uninhibit(call);
    sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_METHOD, "unknown");
  }

  void inhibit(sd_bus_message* call) {
    const char* application = nullptr;
    const char* reason = nullptr;
    std::uint32_t window = 0;
    std::uint32_t flags = 0;
    const int read = isSessionManager_
                         ? sd_bus_message_read(call, "susu", &application, &window, &reason, &flags)
                         : sd_bus_message_read(call, "ss", &application, &reason);
    const bool isRefused = refuses || read < 0 || (isSessionManager_ && *reason == '\0');
    if (isRefused) {
      sd_bus_reply_method_errorf(call, SD_BUS_ERROR_ACCESS_DENIED, "refused");
      return;
    }
    const std::lock_guard lock(mutex_);
    log_.push_back(std::string("Inhibit ") + application + "|" + reason +
                   (isSessionManager_ ? "|" + std::to_string(flags) : ""));
    targets_.push_back(std::string(sd_bus_message_get_path(call)) + " " +
                       sd_bus_message_get_interface(call));
    held_[++lastCookie_] = reason;
    sd_bus_reply_method_return(call, "u", lastCookie_);
  }

  void uninhibit(sd_bus_message* call) {
    std::uint32_t cookie = 0;
    sd_bus_message_read(call, "u", &cookie);
    const std::lock_guard lock(mutex_);
    log_.push_back(sd_bus_message_get_member(call) + (" " + std::to_string(cookie)));
    held_.erase(cookie);
    hadAGap_ = hadAGap_ || held_.empty();
  }

  bool isSessionManager_;
  std::mutex mutex_;
  std::vector<std::string> log_;
  std::vector<std::string> targets_;
  std::map<std::uint32_t, std::string> held_;
  std::uint32_t lastCookie_ = 0;
  bool hadAGap_ = false;
  UnansweredCalls unanswered_;
  BusService service_;
};

}  // namespace platform::testing

#pragma once

#include <systemd/sd-bus.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/UnansweredCalls.h"

namespace platform::testing {

/// A service of the session that grants cookies: `Inhibit(susu)` under org.gnome.SessionManager,
/// `Inhibit(ss)` under any other name. Logs each request as a line, and lists what it has granted.
class FakeSessionService {
 public:
  FakeSessionService(const std::string& address, const std::string& name)
      : isSessionManager_(name == "org.gnome.SessionManager"),
        service_(address, {name}, [this](sd_bus_message* call) { answer(call); }) {}

  std::atomic<bool> refuses = false;
  std::atomic<int> refusals = 0;
  std::atomic<bool> isSilent = false;
  /// Whether the details of an inhibitor are properties, not methods.
  std::atomic<bool> tellsByProperties = false;
  std::atomic<int> readings = 0;   ///< How often somebody asked for its list.
  std::atomic<int> questions = 0;  ///< How often somebody asked for the details of an inhibitor.
  /// The method that fails because the service is too busy.
  std::atomic<const char*> failsAt = "";
  std::atomic<bool> listsNonsense = false;  ///< Whether lists have an unknown type.
  /// Whether details of an inhibitor have an unknown type.
  std::atomic<bool> tellsNonsense = false;

  /// Forgets the calls that it left unanswered.
  void forgetCalls() {
    service_.perform([this](sd_bus*) { unanswered_.answer([](sd_bus_message*) {}); });
  }
  /// Loses what it has granted so far, and tells nobody.
  void forget() {
    const std::lock_guard lock(mutex_);
    held_.clear();
  }
  /// Grants a cookie to another program.
  void grantToAnother(const std::string& reason) {
    const std::lock_guard lock(mutex_);
    held_[++lastCookie_] = reason;
    others_.insert(lastCookie_);
  }

  /// "Inhibit application|reason|flags" and "Uninhibit cookie", in order. The first cookie is 1.
  std::vector<std::string> log() {
    const std::lock_guard lock(mutex_);
    return log_;
  }
  /// The reasons of this program's cookies that are not given back.
  std::vector<std::string> held() {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> reasons;
    for (const auto& [cookie, reason] : held_) {
      if (!others_.contains(cookie)) reasons.push_back(reason);
    }
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

  /// Grants the requests that it left unanswered.
  void answerLate() {
    isSilent = false;
    service_.perform(
        [this](sd_bus*) { unanswered_.answer([this](sd_bus_message* call) { answer(call); }); });
  }

 private:
  void answer(sd_bus_message* call) {
    if (isSilent) return unanswered_.keep(call);
    const std::string_view member = sd_bus_message_get_member(call);
    if (member == failsAt.load()) {
      sd_bus_reply_method_errorf(call, SD_BUS_ERROR_NO_REPLY, "busy");
      return;
    }
    if (member == "Inhibit") return inhibit(call);
    if (member == "Uninhibit" || member == "UnInhibit") return uninhibit(call);
    if (member == "GetInhibitors") return listPaths(call);
    if (member == "HasInhibit") return tellWhetherInhibited(call);
    if (member == "Get" && tellsByProperties) return tellProperty(call);
    if (member.starts_with("Get") && !tellsByProperties) return tell(call, member.substr(3));
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
      ++refusals;
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

  static constexpr const char* kInhibitors = "/org/gnome/SessionManager/Inhibitor";

  static void tellNonsense(sd_bus_message* call) { sd_bus_reply_method_return(call, "au", 1, 7U); }

  void listPaths(sd_bus_message* call) {
    ++readings;
    if (listsNonsense) return tellNonsense(call);
    const std::lock_guard lock(mutex_);
    sd_bus_message* reply = nullptr;
    sd_bus_message_new_method_return(call, &reply);
    sd_bus_message_open_container(reply, 'a', "o");
    for (const auto& [cookie, reason] : held_)
      sd_bus_message_append(reply, "o", (kInhibitors + std::to_string(cookie)).c_str());
    sd_bus_message_close_container(reply);
    sd_bus_message_send(reply);
    sd_bus_message_unref(reply);
  }

  void tellWhetherInhibited(sd_bus_message* call) {
    ++readings;
    if (listsNonsense) return tellNonsense(call);
    const std::lock_guard lock(mutex_);
    sd_bus_reply_method_return(call, "b", held_.empty() ? 0 : 1);
  }

  /// A detail of the inhibitor that is called; absent when there is no such inhibitor.
  std::optional<std::string> detail(sd_bus_message* call, std::string_view name) {
    const std::lock_guard lock(mutex_);
    const std::string path = sd_bus_message_get_path(call);
    for (const auto& [cookie, reason] : held_) {
      if (path != kInhibitors + std::to_string(cookie)) continue;
      if (name == "Reason" || name == "reason") return reason;
      if (name == "AppId" || name == "app_id") {
        return others_.contains(cookie) ? "org.example.Other" : "com.staylit.app";
      }
    }
    return std::nullopt;
  }
  void tell(sd_bus_message* call, std::string_view name) {
    ++questions;
    if (tellsNonsense) return tellNonsense(call);
    constexpr std::uint32_t kSuspend = 4;
    if (name == "Flags" && detail(call, "Reason")) {
      sd_bus_reply_method_return(call, "u", kSuspend);
    } else if (const auto text = detail(call, name)) {
      sd_bus_reply_method_return(call, "s", text->c_str());
    } else {
      sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_OBJECT, "gone");
    }
  }
  void tellProperty(sd_bus_message* call) {
    ++questions;
    if (tellsNonsense) return tellNonsense(call);
    const char* interface = nullptr;
    const char* name = nullptr;
    sd_bus_message_read(call, "ss", &interface, &name);
    if (const auto text = detail(call, name)) {
      sd_bus_reply_method_return(call, "v", "s", text->c_str());
    } else {
      sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_OBJECT, "gone");
    }
  }

  bool isSessionManager_;
  std::mutex mutex_;
  std::vector<std::string> log_;
  std::vector<std::string> targets_;
  std::map<std::uint32_t, std::string> held_;
  std::set<std::uint32_t> others_;
  std::uint32_t lastCookie_ = 0;
  bool hadAGap_ = false;
  UnansweredCalls unanswered_;
  BusService service_;
};

}  // namespace platform::testing

#pragma once

#include <fcntl.h>
#include <poll.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Posix/Files/Descriptor.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/UnansweredCalls.h"

namespace platform::testing {

/// A logind that grants locks, and lists and announces what the test wants.
class FakeLogind {
 public:
  struct Entry {
    std::string what, who, why, mode;
    std::uint32_t uid, pid;
  };

  /// The outcome when logind wants the user's approval.
  enum class Approval { unneeded, given, declined, nobodyToAsk };

  explicit FakeLogind(const std::string& address, Approval ofLocks = Approval::unneeded)
      : approval(ofLocks),
        service_(address, {"org.freedesktop.login1"},
                 [this](sd_bus_message* call) { answer(call); }) {}

  std::atomic<Approval> approval;  ///< Whether a lock needs approval, and the outcome.
  std::atomic<bool> refuses = false;
  std::atomic<int> prompts = 0;
  /// Whether a question to the user waits for `answerLate`.
  std::atomic<bool> isUserThinking = false;
  std::atomic<bool> isSilent = false;
  std::atomic<int> listings = 0;
  std::atomic<bool> listsNonsense = false;         ///< Whether lists have an unknown type.
  std::atomic<std::uint32_t> ofUser = ::getuid();  ///< The user whom the list names for each lock.

  /// What it tells of itself; nothing unless it was set.
  struct Machine {
    std::string idleAction = "ignore";
    std::uint64_t idleActionMicroseconds = 1'800'000'000;
    bool isOnExternalPower = true;
    std::string canSuspend = "yes";
  };
  void setMachine(const Machine& machine) {
    const std::lock_guard lock(mutex_);
    machine_ = machine;
  }

  /// Lists `entries` besides the granted locks.
  void list(std::vector<Entry> entries) {
    const std::lock_guard lock(mutex_);
    entries_ = std::move(entries);
  }

  /// "what|who|why|mode" of each lock that was ever granted.
  std::vector<std::string> granted() {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> result;
    for (const Lock& granted : locks_)
      result.push_back(granted.text);
    return result;
  }
  /// The same for the locks that are still held.
  std::vector<std::string> held() {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> result;
    for (const Lock& granted : locks_) {
      if (!isHungUp(granted.readEnd.get())) result.push_back(granted.text);
    }
    return result;
  }

  /// No longer lists the locks that it has granted so far, as if it had lost them.
  void forget() {
    const std::lock_guard lock(mutex_);
    for (Lock& granted : locks_)
      granted.isForgotten = true;
  }
  /// Whether it lists no granted lock at all.
  std::atomic<bool> listsNoLocks = false;

  void announceSleep(bool isAboutToSleep) {
    service_.perform([isAboutToSleep](sd_bus* bus) {
      sd_bus_emit_signal(bus, "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
                         "PrepareForSleep", "b", isAboutToSleep ? 1 : 0);
    });
  }

  /// How many calls wait for an answer.
  std::size_t waiting() {
    std::size_t result = 0;
    service_.perform([&](sd_bus*) { result = unanswered_.count(); });
    return result;
  }

  /// Grants the locks whose calls it left unanswered.
  void answerLate() {
    isSilent = false;
    isUserThinking = false;
    service_.perform(
        [this](sd_bus*) { unanswered_.answer([this](sd_bus_message* call) { answer(call); }); });
  }

 private:
  struct Lock {
    std::string text;
    Descriptor readEnd;
    Entry entry;
    bool isForgotten = false;
  };

  static bool isHungUp(int descriptor) {
    pollfd poll{descriptor, 0, 0};
    return ::poll(&poll, 1, 0) == 1 && (poll.revents & POLLHUP) != 0;
  }

  void answer(sd_bus_message* call) {
    if (isSilent) return unanswered_.keep(call);
    if (isUserThinking && sd_bus_message_get_allow_interactive_authorization(call) > 0) {
      return unanswered_.keep(call);
    }
    const std::string_view member = sd_bus_message_get_member(call);
    if (member == "Inhibit") return inhibit(call);
    if (member == "ListInhibitors") return listInhibitors(call);
    if (member == "Get") return tellBlocked(call);
    if (member == "GetAll" || member == "CanSuspend") return tellMachine(call, member);
    sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_METHOD, "unknown");
  }

  void tellMachine(sd_bus_message* call, std::string_view member) {
    const std::lock_guard lock(mutex_);
    if (!machine_) {
      sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_METHOD, "unknown");
    } else if (member == "CanSuspend") {
      sd_bus_reply_method_return(call, "s", machine_->canSuspend.c_str());
    } else {
      sd_bus_reply_method_return(call, "a{sv}", 3, "IdleAction", "s", machine_->idleAction.c_str(),
                                 "IdleActionUSec", "t", machine_->idleActionMicroseconds,
                                 "OnExternalPower", "b", machine_->isOnExternalPower ? 1 : 0);
    }
  }

  void inhibit(sd_bus_message* call) {
    const char* what = nullptr;
    const char* who = nullptr;
    const char* why = nullptr;
    const char* mode = nullptr;
    if (sd_bus_message_read(call, "ssss", &what, &who, &why, &mode) < 0 || refuses) {
      sd_bus_reply_method_errorf(call, SD_BUS_ERROR_ACCESS_DENIED, "refused");
      return;
    }
    if (!isApproved(call)) return;
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) < 0) return;
    const Descriptor writeEnd(ends[1]);
    const std::lock_guard lock(mutex_);
    const Entry entry{what, who, why, mode, ofUser, static_cast<std::uint32_t>(::getpid())};
    locks_.push_back(
        {std::string(what) + "|" + who + "|" + why + "|" + mode, Descriptor(ends[0]), entry});
    sd_bus_reply_method_return(call, "h", writeEnd.get());
    // Until the message is sent, it holds a copy of the writing end.
    sd_bus_flush(sd_bus_message_get_bus(call));
  }

  /// Whether the call is approved. If not, the call is answered here.
  bool isApproved(sd_bus_message* call) {
    if (approval == Approval::unneeded) return true;
    if (sd_bus_message_get_allow_interactive_authorization(call) <= 0 ||
        approval == Approval::nobodyToAsk) {
      sd_bus_reply_method_errorf(call, SD_BUS_ERROR_INTERACTIVE_AUTHORIZATION_REQUIRED, "ask");
      return false;
    }
    ++prompts;
    if (approval == Approval::given) return true;
    sd_bus_reply_method_errorf(call, SD_BUS_ERROR_ACCESS_DENIED, "declined");
    return false;
  }

  std::vector<Entry> listed() {
    const std::lock_guard lock(mutex_);
    std::vector<Entry> entries = entries_;
    for (const Lock& granted : locks_) {
      const bool isListed =
          !listsNoLocks && !granted.isForgotten && !isHungUp(granted.readEnd.get());
      if (isListed) entries.push_back(granted.entry);
    }
    return entries;
  }

  /// Answers with the property `BlockInhibited`.
  void tellBlocked(sd_bus_message* call) {
    std::string locks;
    for (const Entry& entry : listed()) {
      if (entry.mode == "block") locks += (locks.empty() ? "" : ":") + entry.what;
    }
    sd_bus_reply_method_return(call, "v", "s", locks.c_str());
  }

  void listInhibitors(sd_bus_message* call) {
    ++listings;
    if (listsNonsense) {
      sd_bus_reply_method_return(call, "a(su)", 1, "idle", 7U);
      return;
    }
    const std::vector<Entry> entries = listed();
    sd_bus_message* reply = nullptr;
    sd_bus_message_new_method_return(call, &reply);
    sd_bus_message_open_container(reply, 'a', "(ssssuu)");
    for (const Entry& entry : entries) {
      sd_bus_message_append(reply, "(ssssuu)", entry.what.c_str(), entry.who.c_str(),
                            entry.why.c_str(), entry.mode.c_str(), entry.uid, entry.pid);
    }
    sd_bus_message_close_container(reply);
    sd_bus_message_send(reply);
    sd_bus_message_unref(reply);
  }

  std::mutex mutex_;
  std::vector<Entry> entries_;
  std::vector<Lock> locks_;
  std::optional<Machine> machine_;
  UnansweredCalls unanswered_;
  BusService service_;
};

}  // namespace platform::testing

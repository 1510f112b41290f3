#pragma once

#include <systemd/sd-bus.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Tests/Platform/Support/BusService.h"

namespace platform::testing {

/// A session manager that lists inhibitors. It tells details by methods, or by properties as some
/// managers do.
class FakeInhibitorList {
 public:
  struct Entry {
    std::string path, applicationId;
    std::uint32_t flags;
    std::string reason{};
  };
  enum class Details { methods, properties };

  explicit FakeInhibitorList(const std::string& address, Details details = Details::methods)
      : details_(details),
        service_(address, {"org.gnome.SessionManager"},
                 [this](sd_bus_message* call) { answer(call); }) {}

  void list(std::vector<Entry> entries) {
    const std::lock_guard lock(mutex_);
    entries_ = std::move(entries);
  }
  std::atomic<int> detailCalls = 0;

 private:
  void answer(sd_bus_message* call) {
    const std::lock_guard lock(mutex_);
    const std::string_view member = sd_bus_message_get_member(call);
    if (member == "GetInhibitors") return answerPaths(call);
    ++detailCalls;
    const std::string_view path = sd_bus_message_get_path(call);
    for (const Entry& entry : entries_) {
      if (entry.path == path) return answerDetail(call, member, entry);
    }
    sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_OBJECT, "gone");
  }

  void answerPaths(sd_bus_message* call) {
    sd_bus_message* reply = nullptr;
    sd_bus_message_new_method_return(call, &reply);
    sd_bus_message_open_container(reply, 'a', "o");
    for (const Entry& entry : entries_)
      sd_bus_message_append(reply, "o", entry.path.c_str());
    sd_bus_message_close_container(reply);
    sd_bus_message_send(reply);
    sd_bus_message_unref(reply);
  }

  void answerDetail(sd_bus_message* call, std::string_view member, const Entry& entry) {
    if (details_ == Details::methods && member == "GetAppId") {
      sd_bus_reply_method_return(call, "s", entry.applicationId.c_str());
    } else if (details_ == Details::methods && member == "GetFlags") {
      sd_bus_reply_method_return(call, "u", entry.flags);
    } else if (details_ == Details::methods && member == "GetReason") {
      sd_bus_reply_method_return(call, "s", entry.reason.c_str());
    } else if (details_ == Details::properties && member == "Get") {
      const char* interface = nullptr;
      const char* name = nullptr;
      sd_bus_message_read(call, "ss", &interface, &name);
      if (std::string_view(name) == "app_id") {
        sd_bus_reply_method_return(call, "v", "s", entry.applicationId.c_str());
      } else {
        sd_bus_reply_method_return(call, "v", "u", entry.flags);
      }
    } else {
      sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_METHOD, "unknown");
    }
  }

  Details details_;
  std::mutex mutex_;
  std::vector<Entry> entries_;
  BusService service_;
};

/// KDE's policy agent, which answers every call with a list of application and reason. It owns
/// `names` on the bus.
inline std::unique_ptr<BusService> policyAgent(
    const std::string& address, std::vector<std::pair<std::string, std::string>> entries,
    std::vector<std::string> names = {"org.kde.Solid.PowerManagement.PolicyAgent"}) {
  return std::make_unique<BusService>(
      address, std::move(names), [entries = std::move(entries)](sd_bus_message* call) {
        sd_bus_message* reply = nullptr;
        sd_bus_message_new_method_return(call, &reply);
        sd_bus_message_open_container(reply, 'a', "(ss)");
        for (const auto& [application, why] : entries) {
          sd_bus_message_append(reply, "(ss)", application.c_str(), why.c_str());
        }
        sd_bus_message_close_container(reply);
        sd_bus_message_send(reply);
        sd_bus_message_unref(reply);
      });
}

}  // namespace platform::testing

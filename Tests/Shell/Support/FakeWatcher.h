#pragma once

#include <systemd/sd-bus.h>

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Tests/Platform/Support/BusService.h"

namespace staylit::testing {

/// A stand-in for a desktop's watcher, with which status items register.
class FakeWatcher {
 public:
  explicit FakeWatcher(const std::string& address)
      : service_(address, {"org.kde.StatusNotifierWatcher"},
                 [this](sd_bus_message* call) { answer(call); }) {}

  /// The bus names of what was registered, in order.
  std::vector<std::string> items() {
    const std::lock_guard lock(mutex_);
    return items_;
  }

 private:
  void answer(sd_bus_message* call) {
    const char* service = nullptr;
    if (std::string_view(sd_bus_message_get_member(call)) != "RegisterStatusNotifierItem" ||
        sd_bus_message_read(call, "s", &service) < 0) {
      sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_METHOD, "unknown");
      return;
    }
    sd_bus_reply_method_return(call, "");
    const std::lock_guard lock(mutex_);
    // An item that registers by its path alone belongs to the sender.
    items_.emplace_back(*service == '/' ? sd_bus_message_get_sender(call) : service);
  }

  std::mutex mutex_;
  std::vector<std::string> items_;
  platform::testing::BusService service_;
};

}  // namespace staylit::testing

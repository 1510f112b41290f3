#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "Tests/Platform/Support/BusService.h"

namespace platform::testing {

/// XFCE's power manager, and the service that keeps its settings: those that it has, by their
/// names.
inline std::unique_ptr<BusService> fakeXfconf(
    const std::string& address,
    std::map<std::string, std::variant<bool, std::uint32_t>, std::less<>> settings) {
  return std::make_unique<BusService>(
      address, std::vector<std::string>{"org.xfce.Xfconf", "org.xfce.PowerManager"},
      [settings = std::move(settings)](sd_bus_message* call) {
        const char* channel = nullptr;
        const char* property = nullptr;
        sd_bus_message_read(call, "ss", &channel, &property);
        const auto found = settings.find(std::string_view(property));
        if (found == settings.end()) {
          sd_bus_reply_method_errorf(call, "org.xfce.Xfconf.Error.PropertyNotFound", "none");
        } else if (const auto* flag = std::get_if<bool>(&found->second)) {
          sd_bus_reply_method_return(call, "v", "b", *flag ? 1 : 0);
        } else {
          sd_bus_reply_method_return(call, "v", "u", std::get<std::uint32_t>(found->second));
        }
      });
}

}  // namespace platform::testing

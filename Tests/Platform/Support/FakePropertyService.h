#pragma once

#include <systemd/sd-bus.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "Tests/Platform/Support/BusService.h"

namespace platform::testing {

/// A service whose objects have properties and announce their changes.
class FakePropertyService {
 public:
  using Value = std::variant<bool, std::uint32_t, double, std::string>;
  using Properties = std::map<std::string, Value>;

  FakePropertyService(const std::string& address, const std::string& name)
      : service_(address, {name}, [this](sd_bus_message* call) { answer(call); }) {}

  std::atomic<int> readings = 0;

  void set(const std::string& path, const std::string& interface, Properties properties) {
    const std::lock_guard lock(mutex_);
    objects_[path + " " + interface] = std::move(properties);
  }

  /// Changes one property and announces its new value.
  void change(const std::string& path, const std::string& interface, const std::string& name,
              const Value& value) {
    remember(path, interface, name, value);
    announce(path, interface, {{name, value}});
  }

  /// Announces values that the properties do not have.
  void announce(const std::string& path, const std::string& interface, const Properties& values) {
    emit(path, [&](sd_bus_message* signal) {
      sd_bus_message_append(signal, "s", interface.c_str());
      sd_bus_message_open_container(signal, 'a', "{sv}");
      for (const auto& [name, value] : values)
        append(signal, name, value);
      sd_bus_message_close_container(signal);
      sd_bus_message_append(signal, "as", 0);
    });
  }

  /// Changes one property and announces only its name.
  void invalidate(const std::string& path, const std::string& interface, const std::string& name,
                  const Value& value) {
    remember(path, interface, name, value);
    emit(path, [&](sd_bus_message* signal) {
      sd_bus_message_append(signal, "sa{sv}as", interface.c_str(), 0, 1, name.c_str());
    });
  }

 private:
  void remember(const std::string& path, const std::string& interface, const std::string& name,
                const Value& value) {
    const std::lock_guard lock(mutex_);
    objects_[path + " " + interface][name] = value;
  }

  template <class Fill>
  void emit(const std::string& path, const Fill& fill) {
    service_.perform([&](sd_bus* bus) {
      sd_bus_message* signal = nullptr;
      sd_bus_message_new_signal(bus, &signal, path.c_str(), "org.freedesktop.DBus.Properties",
                                "PropertiesChanged");
      fill(signal);
      sd_bus_message_send(signal);
      sd_bus_message_unref(signal);
    });
  }

  static void append(sd_bus_message* message, const std::string& name, const Value& value) {
    const char* key = name.c_str();
    if (const auto* flag = std::get_if<bool>(&value)) {
      sd_bus_message_append(message, "{sv}", key, "b", *flag ? 1 : 0);
    } else if (const auto* number = std::get_if<std::uint32_t>(&value)) {
      sd_bus_message_append(message, "{sv}", key, "u", *number);
    } else if (const auto* real = std::get_if<double>(&value)) {
      sd_bus_message_append(message, "{sv}", key, "d", *real);
    } else if (const auto* text = std::get_if<std::string>(&value)) {
      appendText(message, key, *text);
    }
  }

  /// Appends any bytes. sd-bus checks a text that it appends, but not a space that is filled later.
  static void appendText(sd_bus_message* message, const char* key, const std::string& text) {
    char* space = nullptr;
    sd_bus_message_open_container(message, 'e', "sv");
    sd_bus_message_append(message, "s", key);
    sd_bus_message_open_container(message, 'v', "s");
    if (sd_bus_message_append_string_space(message, text.size(), &space) >= 0) {
      text.copy(space, text.size());
    }
    sd_bus_message_close_container(message);
    sd_bus_message_close_container(message);
  }

  void answer(sd_bus_message* call) {
    const char* interface = nullptr;
    if (std::string_view(sd_bus_message_get_member(call)) != "GetAll" ||
        sd_bus_message_read(call, "s", &interface) < 0) {
      sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_METHOD, "unknown");
      return;
    }
    ++readings;
    const std::lock_guard lock(mutex_);
    sd_bus_message* reply = nullptr;
    sd_bus_message_new_method_return(call, &reply);
    sd_bus_message_open_container(reply, 'a', "{sv}");
    // Values that are not simple.
    sd_bus_message_append(reply, "{sv}", "History", "a(ud)", 1, 7, 1.5);
    sd_bus_message_append(reply, "{sv}", "Symbol", "o", "/symbol");
    for (const auto& [name, value] :
         objects_[std::string(sd_bus_message_get_path(call)) + " " + interface]) {
      append(reply, name, value);
    }
    sd_bus_message_close_container(reply);
    sd_bus_message_send(reply);
    sd_bus_message_unref(reply);
  }

  std::mutex mutex_;
  std::map<std::string, Properties> objects_;
  BusService service_;
};

}  // namespace platform::testing

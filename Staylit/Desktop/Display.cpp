#include "Staylit/Desktop/Display.h"

#include <array>
#include <cstdlib>
#include <string_view>

#include "Staylit/Desktop/MessageReading.h"

namespace staylit {
namespace {

// With what a toolkit needs to look as on that desktop.
constexpr std::array kNames{"DISPLAY",          "WAYLAND_DISPLAY",     "XAUTHORITY",
                            "XDG_SESSION_TYPE", "XDG_CURRENT_DESKTOP", "QT_QPA_PLATFORMTHEME"};

constexpr platform::BusMethod kGetProperty{"org.freedesktop.systemd1", "/org/freedesktop/systemd1",
                                           "org.freedesktop.DBus.Properties", "Get"};

std::vector<const char*>& learnt() {
  static std::vector<const char*> names;
  return names;
}

bool isSet(const char* name) {
  const char* value = std::getenv(name);
  return value && *value;
}

void learnOne(std::string_view variable) {
  for (const char* name : kNames) {
    const std::string prefix = std::string(name) + "=";
    if (!variable.starts_with(prefix) || isSet(name)) continue;
    ::setenv(name, std::string(variable.substr(prefix.size())).c_str(), 1);
    learnt().push_back(name);
  }
}

}  // namespace

bool Display::isKnown() {
  return isSet("WAYLAND_DISPLAY") || isSet("DISPLAY");
}

std::vector<std::string> Display::variables() {
  std::vector<std::string> result;
  for (const char* name : kNames) {
    if (isSet(name)) result.push_back(std::string(name) + "=" + std::getenv(name));
  }
  return result;
}

void Display::learn(const std::vector<std::string>& variables) {
  if (isKnown()) return;
  for (const std::string& variable : variables)
    learnOne(variable);
}

void Display::forget() {
  for (const char* name : learnt())
    ::unsetenv(name);
  learnt().clear();
}

void Display::learnFromServiceManager(platform::Bus& sessionBus) {
  const platform::BusReply reply = sessionBus.call(kGetProperty, [](sd_bus_message* call) {
    return sd_bus_message_append(call, "ss", "org.freedesktop.systemd1.Manager", "Environment");
  });
  sd_bus_message* message = reply.message.get();
  std::vector<std::string> variables;
  if (!reply || sd_bus_message_enter_container(message, 'v', "as") < 0) return;
  if (readTexts(message, variables) >= 0) learn(variables);
}

}  // namespace staylit

#include "Staylit/Desktop/Display/Display.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <string_view>

#include "Platform/Linux/Bus/MessageReading.h"
#include "Tidewell/ForeignText.h"
#include "Tidewell/Log.h"

namespace staylit {
namespace {

// Some of these variables make a toolkit look as it does on the desktop.
constexpr std::array kNames{"DISPLAY",          "WAYLAND_DISPLAY",     "XAUTHORITY",
                            "XDG_SESSION_TYPE", "XDG_CURRENT_DESKTOP", "QT_QPA_PLATFORMTHEME"};

constexpr platform::BusMethod kGetProperty{"org.freedesktop.systemd1", "/org/freedesktop/systemd1",
                                           "org.freedesktop.DBus.Properties", "Get"};

constexpr std::size_t kLongestLogged = 100;

std::vector<const char*>& learnt() {
  static std::vector<const char*> names;
  return names;
}

bool isSet(const char* name) {
  const char* value = std::getenv(name);
  return value && *value;
}

bool isDigits(std::string_view text) {
  return !text.empty() && text.size() <= 5 &&
         std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

/// Whether `display` is of the form ":0", ":0.1" or "unix:0". A display with a host before the
/// colon is reached over a network.
bool isLocalX(std::string_view display) {
  if (display.starts_with("unix:")) display.remove_prefix(4);
  if (!display.starts_with(':')) return false;
  display.remove_prefix(1);
  const std::size_t dot = display.find('.');
  const bool hasScreen = dot != std::string_view::npos;
  return isDigits(display.substr(0, dot)) && (!hasScreen || isDigits(display.substr(dot + 1)));
}

/// Whether `path` is a file of that type which only this user or the administrator can have made.
bool isOwn(const std::string& path, mode_t type) {
  struct stat status {};
  return path.starts_with('/') && stat(path.c_str(), &status) == 0 &&
         (status.st_mode & S_IFMT) == type && (status.st_uid == geteuid() || status.st_uid == 0);
}

/// Whether `display` is a name within the user's own folder for sockets, or the path of a socket
/// that `isOwn` accepts.
bool isOwnWayland(const std::string& display) {
  if (display.starts_with('/')) return isOwn(display, S_IFSOCK);
  return display.find('/') == std::string::npos && !display.starts_with('.');
}

/// Whether `text` is a word, or several words with marks between them, as in the names of session
/// types and desktops.
bool isPlainName(std::string_view text) {
  constexpr std::string_view kMarks = "-_.:;,+= ";
  return text.size() <= 100 && std::ranges::all_of(text, [kMarks](char c) {
           const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
           return isLetter || (c >= '0' && c <= '9') || kMarks.find(c) != std::string_view::npos;
         });
}

/// Whether the program may believe what somebody else says of the display: the display is on this
/// machine, and the libraries open no file for it that a stranger made.
bool isCredible(std::string_view name, const std::string& value) {
  if (value.empty()) return false;
  if (name == "DISPLAY") return isLocalX(value);
  if (name == "WAYLAND_DISPLAY") return isOwnWayland(value);
  if (name == "XAUTHORITY") return isOwn(value, S_IFREG);
  return isPlainName(value);
}

/// Writes a line to the log, but not the same line twice in a row.
void refuse(std::string_view variable) {
  static std::string lastLogged;
  const std::string shown = tidewell::cleaned(variable, kLongestLogged);
  if (lastLogged == shown) return;
  lastLogged = shown;
  tidewell::Log::error("not taken over from another program: " + shown);
}

void learnOne(std::string_view variable) {
  for (const char* name : kNames) {
    const std::string prefix = std::string(name) + "=";
    if (!variable.starts_with(prefix) || isSet(name)) continue;
    const std::string value(variable.substr(prefix.size()));
    if (!isCredible(name, value)) {
      refuse(variable);
      continue;
    }
    ::setenv(name, value.c_str(), 1);
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

void Display::forgetAll() {
  for (const char* name : kNames)
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
  if (platform::readTexts(message, variables) >= 0) learn(variables);
}

}  // namespace staylit

#include "Staylit/Desktop/Windows/DisplayListeners.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "Tidewell/TextReading.h"

namespace staylit::windows {
namespace {

constexpr std::string_view kXSockets = "/tmp/.X11-unix/X";

/// Whether the process at the other end runs neither as this user nor as the administrator.
bool isStranger(int socket) {
  ucred server{};
  socklen_t size = sizeof server;
  if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &server, &size) != 0) return false;
  return server.uid != 0 && server.uid != geteuid();
}

std::string waylandSocket() {
  const char* name = std::getenv("WAYLAND_DISPLAY");
  std::string display = name && *name ? name : "wayland-0";
  if (display.starts_with('/')) return display;
  const char* folder = std::getenv("XDG_RUNTIME_DIR");
  return folder ? std::string(folder) + "/" + display : "";
}

/// The name of the other end of a local connection; absent when `socket` is no such connection.
std::optional<std::string> peerName(int socket) {
  sockaddr_un address{};
  socklen_t size = sizeof address;
  if (getpeername(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) return std::nullopt;
  if (address.sun_family != AF_UNIX) return std::nullopt;
  const std::size_t begin = offsetof(sockaddr_un, sun_path);
  std::string name(address.sun_path, size > begin ? size - begin : 0);
  std::erase(name, '\0');
  return name;
}

}  // namespace

DisplayListeners::DisplayListeners(const std::string& display) {
  // "host:0" is another machine's display; "unix:0" and ":0.1" are displays of this machine.
  const std::size_t colon = display.find(':');
  if (colon == std::string::npos || (colon > 0 && display.substr(0, colon) != "unix")) return;
  std::string number = display.substr(colon + 1);
  number.resize(std::min(number.find('.'), number.size()));
  const std::string path = std::string(kXSockets) + number;
  ask(path, true);
  ask(path, false);
}

DisplayListeners DisplayListeners::ofWayland() {
  DisplayListeners listeners;
  listeners.ask(waylandSocket(), false);
  return listeners;
}

/// Asks who listens at `path`, which is a file, or an abstract address of that name. A server that
/// takes no connection now may take the next one, so it counts as a stranger.
void DisplayListeners::ask(const std::string& path, bool isAbstract) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::size_t offset = isAbstract ? 1 : 0;
  if (path.size() + 1 + offset > sizeof address.sun_path) return;
  std::memcpy(address.sun_path + offset, path.data(), path.size());
  const std::size_t size =
      offsetof(sockaddr_un, sun_path) + path.size() + 1;  // Either a zero before or one after.
  platform::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (connect(socket.get(), reinterpret_cast<const sockaddr*>(&address),
              static_cast<socklen_t>(size)) == 0) {
    areStrangers_ = areStrangers_ || isStranger(socket.get());
    connections_.push_back(std::move(socket));
    return;
  }
  const bool isNobodyThere = errno == ENOENT || errno == ECONNREFUSED;
  areStrangers_ = areStrangers_ || !isNobodyThere;
}

bool isServedByStrangers() {
  const std::string wayland = waylandSocket();
  std::error_code error;
  std::filesystem::directory_iterator entry("/proc/self/fd", error);
  for (const std::filesystem::directory_iterator end; !error && entry != end;
       entry.increment(error)) {
    const auto number = tidewell::wholeNumber<int>(entry->path().filename().native());
    const std::optional<std::string> name = number ? peerName(*number) : std::nullopt;
    if (!name || (!name->starts_with(kXSockets) && *name != wayland)) continue;
    if (isStranger(*number)) return true;
  }
  return false;
}

}  // namespace staylit::windows

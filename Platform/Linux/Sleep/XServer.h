#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// How an X server of this machine is reached.
struct XAddress {
  std::string socket;  ///< The path of its socket.
  std::string cookie;  ///< What it knows its programs by; empty for a server that lets all in.

  /// The server that `DISPLAY` and `XAUTHORITY` name. Absent where there is none, or where it is on
  /// another machine.
  static std::optional<XAddress> ofEnvironment();
};

/// How to reach the server of this session; absent where there is none.
using FindXServer = std::function<std::optional<XAddress>()>;

/// The cookie for the display with that number (`"0"`) in the bytes of an authority file.
std::string xCookie(std::string_view authority, std::string_view displayNumber);

/// A short conversation with an X server about how long nobody has used keyboard or mouse. Waits
/// for at most a second for each answer. After an answer that does not come, nothing more is asked.
///
/// It speaks the few requests of the protocol itself: the library for it waits without a limit for
/// a server that is silent, and a machine without a desktop shall not have to have it.
class XServer {
 public:
  /// Absent when the server cannot be reached, or does not let this program in.
  static std::optional<XServer> connect(const XAddress& address);

  /// For how long nobody has used keyboard or mouse; absent when the server cannot tell.
  std::optional<std::chrono::milliseconds> idleTime();
  /// Makes the server count from now, as a key would, which also lights the screen. Returns whether
  /// the server has done it.
  bool restartIdleTime();
  /// The same, but a screen that the server's screen saver has darkened stays dark.
  bool restartIdleTimeOnly();

 private:
  XServer(Descriptor socket, std::uint32_t root) : socket_(std::move(socket)), root_(root) {}
  std::optional<std::string> ask(std::string_view request);
  std::optional<std::string> askSaver();
  bool force(std::initializer_list<std::uint8_t> modes);

  Descriptor socket_;
  std::uint32_t root_;
};

}  // namespace platform

#include "Platform/Linux/Sleep/XServer.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <bit>
#include <cstdlib>
#include <cstring>

#include "Platform/Linux/Files/RegularFile.h"

namespace platform {
namespace {

constexpr timeval kPatience{1, 0};
constexpr std::string_view kCookieName = "MIT-MAGIC-COOKIE-1";
constexpr std::string_view kSaver = "MIT-SCREEN-SAVER";
/// Every answer has at least so many bytes, and what is asked here has no more.
constexpr std::size_t kAnswerBytes = 32;
constexpr std::size_t kMostAuthority = 65536;

/// Numbers of the protocol.
constexpr std::uint8_t kQueryExtension = 98;
constexpr std::uint8_t kForceScreenSaver = 115;
constexpr std::uint8_t kGetInputFocus = 43;
constexpr std::uint8_t kQuerySaver = 1;
constexpr std::uint8_t kReset = 0;
constexpr std::uint8_t kActivate = 1;
constexpr char kSaverIsOn = 1;

std::size_t padded(std::size_t bytes) {
  return (bytes + 3) / 4 * 4;
}

/// A message in the order of bytes of this machine, which the first byte of all tells the server.
class Message {
 public:
  Message& byte(std::uint8_t value) {
    bytes_ += static_cast<char>(value);
    return *this;
  }
  Message& word(std::size_t value) { return number(static_cast<std::uint16_t>(value)); }
  Message& number32(std::uint32_t value) { return number(value); }
  Message& text(std::string_view value) {
    bytes_ += value;
    bytes_.resize(padded(bytes_.size()));
    return *this;
  }
  [[nodiscard]] const std::string& bytes() const { return bytes_; }

 private:
  template <typename Number>
  Message& number(Number value) {
    bytes_.append(reinterpret_cast<const char*>(&value), sizeof value);
    return *this;
  }

  std::string bytes_;
};

template <typename Number>
std::optional<Number> numberAt(std::string_view bytes, std::size_t offset) {
  if (bytes.size() < offset + sizeof(Number)) return std::nullopt;
  Number value = 0;
  std::memcpy(&value, bytes.data() + offset, sizeof value);
  return value;
}

bool send(int socket, std::string_view bytes) {
  return ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
         static_cast<ssize_t>(bytes.size());
}

std::optional<std::string> receive(int socket, std::size_t count) {
  std::string bytes(count, '\0');
  const ssize_t got = ::recv(socket, bytes.data(), count, MSG_WAITALL);
  return got == static_cast<ssize_t>(count) ? std::optional(bytes) : std::nullopt;
}

Descriptor connected(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return {};
  path.copy(address.sun_path, path.size());
  Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  for (const int option : {SO_RCVTIMEO, SO_SNDTIMEO})
    ::setsockopt(socket.get(), SOL_SOCKET, option, &kPatience, sizeof kPatience);
  const auto* where = reinterpret_cast<const sockaddr*>(&address);
  return ::connect(socket.get(), where, sizeof address) == 0 ? std::move(socket) : Descriptor();
}

std::string introduction(const std::string& cookie) {
  const std::string_view name = cookie.empty() ? "" : kCookieName;
  Message message;
  message.byte(std::endian::native == std::endian::little ? 'l' : 'B').byte(0);
  message.word(11).word(0).word(name.size()).word(cookie.size()).word(0);
  return message.text(name).text(cookie).bytes();
}

/// The root window of the first screen, in what the server says of itself.
std::optional<std::uint32_t> rootWindow(std::string_view setup) {
  const auto vendor = numberAt<std::uint16_t>(setup, 16);
  const auto formats = numberAt<std::uint8_t>(setup, 21);
  if (!vendor || !formats) return std::nullopt;
  return numberAt<std::uint32_t>(setup, 32 + padded(*vendor) + std::size_t{8} * *formats);
}

/// One part of an authority file, in front of which stands its length.
std::optional<std::string_view> takePart(std::string_view& rest) {
  if (rest.size() < 2) return std::nullopt;
  const auto byte = [&rest](std::size_t at) { return static_cast<unsigned char>(rest[at]); };
  const std::size_t length = std::size_t{byte(0)} * 256 + byte(1);
  if (rest.size() < 2 + length) return std::nullopt;
  const std::string_view part = rest.substr(2, length);
  rest.remove_prefix(2 + length);
  return part;
}

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

}  // namespace

std::string xCookie(std::string_view authority, std::string_view displayNumber) {
  while (authority.size() > 2) {
    authority.remove_prefix(2);  // The kind of the address, which is not compared.
    const auto address = takePart(authority);
    const auto number = takePart(authority);
    const auto name = takePart(authority);
    const auto cookie = takePart(authority);
    if (!address || !number || !name || !cookie) break;
    const bool fits = number->empty() || *number == displayNumber;
    if (fits && *name == kCookieName) return std::string(*cookie);
  }
  return "";
}

std::optional<XAddress> XAddress::ofEnvironment() {
  std::string display = variable("DISPLAY");
  if (!display.starts_with(':')) return std::nullopt;
  const std::string number = display.substr(1, display.find('.') - 1);
  if (number.empty() || number.find_first_not_of("0123456789") != std::string::npos)
    return std::nullopt;
  std::string file = variable("XAUTHORITY");
  if (file.empty()) file = variable("HOME") + "/.Xauthority";
  return XAddress{"/tmp/.X11-unix/X" + number,
                  xCookie(readRegularFile(file, kMostAuthority).text, number)};
}

std::optional<XServer> XServer::connect(const XAddress& address) {
  Descriptor socket = connected(address.socket);
  if (!socket || !send(socket.get(), introduction(address.cookie))) return std::nullopt;
  const auto head = receive(socket.get(), 8);
  if (!head || head->front() != 1) return std::nullopt;
  const auto length = numberAt<std::uint16_t>(*head, 6);
  const auto setup = receive(socket.get(), std::size_t{4} * length.value_or(0));
  const auto root = setup ? rootWindow(*setup) : std::nullopt;
  if (!root) return std::nullopt;
  return XServer(std::move(socket), *root);
}

/// Gives the answer. The server may say other things, but only to those who wanted to hear them.
std::optional<std::string> XServer::ask(std::string_view request) {
  if (!socket_ || !send(socket_.get(), request)) return std::nullopt;
  auto answer = receive(socket_.get(), kAnswerBytes);
  if (answer && answer->front() == 1) return answer;
  socket_.reset();
  return std::nullopt;
}

std::optional<std::string> XServer::askSaver() {
  const std::size_t length = 2 + padded(kSaver.size()) / 4;
  const auto extension = ask(Message()
                                 .byte(kQueryExtension)
                                 .byte(0)
                                 .word(length)
                                 .word(kSaver.size())
                                 .word(0)
                                 .text(kSaver)
                                 .bytes());
  if (!extension || (*extension)[8] == 0) return std::nullopt;
  const auto number = static_cast<std::uint8_t>((*extension)[9]);
  return ask(Message().byte(number).byte(kQuerySaver).word(2).number32(root_).bytes());
}

std::optional<std::chrono::milliseconds> XServer::idleTime() {
  const auto saver = askSaver();
  if (!saver) return std::nullopt;
  return std::chrono::milliseconds(*numberAt<std::uint32_t>(*saver, 16));
}

bool XServer::restartIdleTime() {
  return force({kReset});
}

bool XServer::restartIdleTimeOnly() {
  const auto saver = askSaver();
  if (!saver) return false;
  const bool isDark = (*saver)[1] == kSaverIsOn;
  return isDark ? force({kReset, kActivate}) : force({kReset});
}

/// Tells the screen saver each of these in turn.
bool XServer::force(std::initializer_list<std::uint8_t> modes) {
  Message message;
  for (const std::uint8_t mode : modes)
    message.byte(kForceScreenSaver).byte(mode).word(1);
  // Those have no answer, so something is asked that has one.
  return ask(message.byte(kGetInputFocus).byte(0).word(1).bytes()).has_value();
}

}  // namespace platform

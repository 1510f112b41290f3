#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>

#include "Platform/Linux/Sleep/XServer.h"
#include "Platform/Posix/Files/Descriptor.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform::testing {

/// An X server with one screen that knows only how long nobody has been there. It serves one
/// program on a thread of its own, as a real one answers these requests, and counts what it was
/// asked.
class FakeXServer {
 public:
  static constexpr std::uint32_t kRoot = 0x4D3;
  static constexpr std::uint8_t kSaver = 144;

  explicit FakeXServer(std::chrono::milliseconds idle, std::string cookie = "", bool knows = true)
      : idle_(idle), cookie_(std::move(cookie)), knowsSaver_(knows) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path_.copy(address.sun_path, path_.size());
    const auto* where = reinterpret_cast<const sockaddr*>(&address);
    if (::bind(listening_.get(), where, sizeof address) != 0 || ::listen(listening_.get(), 4) != 0)
      std::abort();
    thread_ = std::thread([this] {
      while (const Descriptor caller{::accept(listening_.get(), nullptr, nullptr)})
        serve(caller.get());
    });
  }
  ~FakeXServer() { stop(); }
  FakeXServer(const FakeXServer&) = delete;
  FakeXServer& operator=(const FakeXServer&) = delete;

  [[nodiscard]] XAddress address(const std::string& cookie = "") const { return {path_, cookie}; }

  /// From now on nobody has been there for so long.
  void setIdle(std::chrono::milliseconds idle) { idle_ = idle; }

  /// From now on its screen saver is on, or not.
  void setDark(bool isDark) { isDark_ = isDark; }
  [[nodiscard]] bool isDark() const { return isDark_; }

  /// How often it was told that somebody is there. It serves nobody afterwards.
  int restarts() {
    stop();
    return restarts_;
  }

 private:
  void stop() {
    ::shutdown(listening_.get(), SHUT_RDWR);
    if (thread_.joinable()) thread_.join();
  }

  static std::string receive(int caller, std::size_t count) {
    std::string bytes(count, '\0');
    if (count == 0) return bytes;
    const ssize_t got = ::recv(caller, bytes.data(), count, MSG_WAITALL);
    return got == static_cast<ssize_t>(count) ? bytes : std::string();
  }
  static std::uint16_t word(std::string_view bytes, std::size_t at) {
    std::uint16_t value = 0;
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return value;
  }
  static void put(std::string& bytes, std::size_t at, std::uint32_t value, std::size_t size) {
    std::memcpy(bytes.data() + at, &value, size);
  }
  static void say(int caller, const std::string& bytes) {
    static_cast<void>(::send(caller, bytes.data(), bytes.size(), MSG_NOSIGNAL));
  }

  void serve(int caller) {
    if (!welcome(caller)) return;
    for (std::string head = receive(caller, 4); !head.empty(); head = receive(caller, 4)) {
      const std::string rest = receive(caller, std::size_t{4} * (word(head, 2) - 1U));
      answer(caller, static_cast<std::uint8_t>(head[0]), static_cast<std::uint8_t>(head[1]), rest);
    }
  }

  /// What a server of X.Org says, with one vendor's name and one format of pictures.
  bool welcome(int caller) {
    const std::string head = receive(caller, 12);
    if (head.empty() || head[0] != 'l' || word(head, 2) != 11) return false;
    const auto padded = [](std::size_t bytes) { return (bytes + 3) / 4 * 4; };
    const std::string name = receive(caller, padded(word(head, 6)));
    const std::string cookie = receive(caller, padded(word(head, 8))).substr(0, word(head, 8));
    const bool isKnown =
        cookie_.empty() || (cookie == cookie_ && name == std::string("MIT-MAGIC-COOKIE-1\0\0", 20));
    constexpr std::size_t kVendorBytes = 20;
    std::string setup(8 + 32 + kVendorBytes + 8 + 40, '\0');
    put(setup, 0, isKnown ? 1 : 0, 1);
    put(setup, 6, static_cast<std::uint32_t>(setup.size() - 8) / 4, 2);
    put(setup, 8 + 16, 18, 2);  // The vendor's name, which is padded.
    put(setup, 8 + 20, 1, 1);
    put(setup, 8 + 21, 1, 1);
    put(setup, 8 + 32 + kVendorBytes + 8, kRoot, 4);
    say(caller, setup);
    return isKnown;
  }

  void answer(int caller, std::uint8_t code, std::uint8_t detail, const std::string& rest) {
    std::string reply(32, '\0');
    put(reply, 0, 1, 1);
    if (code == 98) {  // QueryExtension
      const bool isSaver = rest.substr(4, word(rest, 0)) == "MIT-SCREEN-SAVER";
      put(reply, 8, isSaver && knowsSaver_ ? 1 : 0, 1);
      put(reply, 9, kSaver, 1);
    } else if (code == kSaver && detail == 1 && rest == rootBytes()) {
      put(reply, 1, isDark_ ? 1 : 0, 1);
      put(reply, 16, static_cast<std::uint32_t>(idle_.load().count()), 4);
    } else if (code == 115 && detail == 0) {  // ForceScreenSaver, Reset: it has no answer.
      idle_ = std::chrono::milliseconds(0);
      isDark_ = false;
      ++restarts_;
      return;
    } else if (code == 115 && detail == 1) {  // Activate: it does not touch the idle time.
      isDark_ = true;
      return;
    } else if (code != 43) {  // GetInputFocus
      put(reply, 0, 0, 1);
    }
    say(caller, reply);
  }

  static std::string rootBytes() {
    std::string bytes(4, '\0');
    put(bytes, 0, kRoot, 4);
    return bytes;
  }

  TemporaryFolder folder_;
  std::string path_ = folder_.path("X");
  Descriptor listening_{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
  std::atomic<std::chrono::milliseconds> idle_;
  std::atomic<bool> isDark_ = false;
  const std::string cookie_;
  const bool knowsSaver_;
  int restarts_ = 0;
  std::thread thread_;
};

}  // namespace platform::testing

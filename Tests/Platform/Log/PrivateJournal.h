#pragma once

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <string_view>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// The socket of a journal, in a `/run` that only this process sees. Make it in a child; it ends
/// with the child.
class PrivateJournal {
 public:
  using Fields = std::map<std::string, std::string>;

  /// Gives this process an empty `/run` of its own. False when that is not allowed.
  static bool hideRun() {
    const int spaces = geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER;
    return unshare(spaces) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("none", "/run", "tmpfs", 0, nullptr) == 0;
  }

  PrivateJournal() : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    mkdir("/run/systemd", 0755);
    mkdir("/run/systemd/journal", 0755);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, "/run/systemd/journal/socket");
    listens_ =
        bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }

  [[nodiscard]] bool listens() const { return listens_; }

  /// The fields of the next entry; empty when there is none.
  Fields receive() {
    char buffer[65536];
    const ssize_t size = recv(socket_.get(), buffer, sizeof buffer, 0);
    return size < 0 ? Fields() : parse({buffer, static_cast<std::size_t>(size)});
  }

 private:
  /// A field is "NAME=value" and a line feed, or NAME, a line feed, the value's length in 64 bits,
  /// the value, and a line feed.
  static Fields parse(std::string_view entry) {
    Fields fields;
    while (!entry.empty()) {
      const std::size_t end = entry.find('\n');
      const std::string_view line = entry.substr(0, end);
      entry.remove_prefix(end + 1);
      const std::size_t equals = line.find('=');
      if (equals != std::string_view::npos) {
        fields[std::string(line.substr(0, equals))] = line.substr(equals + 1);
        continue;
      }
      std::uint64_t size = 0;
      std::memcpy(&size, entry.data(), sizeof size);
      fields[std::string(line)] = entry.substr(sizeof size, size);
      entry.remove_prefix(sizeof size + size + 1);
    }
    return fields;
  }

  Descriptor socket_;
  bool listens_ = false;
};

}  // namespace platform

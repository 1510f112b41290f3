#include "Tests/Platform/Network/LoopbackServer.h"

#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <utility>

namespace platform {
namespace {

using Chunk = std::array<char, 8192>;

}  // namespace

LoopbackServer::LoopbackServer(int family) {
  if (family == AF_INET) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    length_ = sizeof address;
    std::memcpy(&address_, &address, sizeof address);
  } else {
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_addr = in6addr_loopback;
    length_ = sizeof address;
    std::memcpy(&address_, &address, sizeof address);
  }
  Descriptor socket(::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0));
  auto* address = reinterpret_cast<sockaddr*>(&address_);
  if (!socket || bind(socket.get(), address, length_) != 0 || listen(socket.get(), 512) != 0 ||
      getsockname(socket.get(), address, &length_) != 0) {
    return;
  }
  listener_ = std::move(socket);
}

Descriptor LoopbackServer::connect() const {
  Descriptor socket(::socket(address_.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const auto* address = reinterpret_cast<const sockaddr*>(&address_);
  if (socket && ::connect(socket.get(), address, length_) != 0) socket.reset();
  return socket;
}

Descriptor LoopbackServer::accept() const {
  return Descriptor(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
}

bool sendBytes(const Descriptor& connection, std::uint64_t count) {
  const Chunk chunk{};
  while (count > 0) {
    const auto part = std::min<std::uint64_t>(count, chunk.size());
    const ssize_t sent = send(connection.get(), chunk.data(), part, MSG_NOSIGNAL);
    if (sent <= 0) return false;
    count -= static_cast<std::uint64_t>(sent);
  }
  return true;
}

bool receiveBytes(const Descriptor& connection, std::uint64_t count) {
  Chunk chunk{};
  while (count > 0) {
    const auto part = std::min<std::uint64_t>(count, chunk.size());
    const ssize_t received = recv(connection.get(), chunk.data(), part, 0);
    if (received <= 0) return false;
    count -= static_cast<std::uint64_t>(received);
  }
  return true;
}

}  // namespace platform

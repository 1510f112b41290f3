#include "Platform/Linux/Network/SocketDiagnostics.h"

#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>

#include "Platform/Linux/Network/SocketListReader.h"
#include "Platform/Posix/Files/Descriptor.h"

namespace platform {
namespace {

using namespace std::chrono_literals;
using SteadyTime = std::chrono::steady_clock::time_point;

constexpr std::uint32_t kSequence = 1;
constexpr std::size_t kListingBytes = std::size_t{16} << 10;
constexpr timeval kReceiveTimeout{1, 0};
constexpr auto kListingTimeout = 5s;

// The states in which a socket may have moved a process's data. Listening sockets move none, and
// sockets in TIME_WAIT or with a half-open connection have no counters.
constexpr std::uint32_t kStates = 1U << TCP_ESTABLISHED | 1U << TCP_SYN_SENT | 1U << TCP_FIN_WAIT1 |
                                  1U << TCP_FIN_WAIT2 | 1U << TCP_CLOSE_WAIT | 1U << TCP_LAST_ACK |
                                  1U << TCP_CLOSING;

struct Request {
  nlmsghdr header;
  inet_diag_req query;
};

/// Uses the older of the two forms of the request. The newer one takes only one address family, so
/// the whole table would be walked twice.
Request listingRequest() {
  Request request{};
  request.header.nlmsg_len = sizeof(Request);
  request.header.nlmsg_type = TCPDIAG_GETSOCK;
  request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  request.header.nlmsg_seq = kSequence;
  request.query.idiag_ext = 1U << (INET_DIAG_INFO - 1);
  request.query.idiag_states = kStates;
  return request;
}

Descriptor openedSocket() {
  Descriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
  if (socket) {
    setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &kReceiveTimeout, sizeof kReceiveTimeout);
  }
  return socket;
}

bool ask(const Descriptor& socket) {
  const Request request = listingRequest();
  sockaddr_nl kernel{};
  kernel.nl_family = AF_NETLINK;
  iovec part{const_cast<Request*>(&request), sizeof request};
  msghdr message{};
  message.msg_name = &kernel;
  message.msg_namelen = sizeof kernel;
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  return sendmsg(socket.get(), &message, 0) == static_cast<ssize_t>(sizeof request);
}

using Buffer = std::array<std::byte, kListingBytes>;

enum class Received { datagram, nothing, retry };

/// Receives one datagram. `length` is the size of the part that lies in `buffer`.
Received receive(const Descriptor& socket, Buffer& buffer, std::size_t& length,
                 SocketListReader& reader) {
  sockaddr_nl sender{};
  iovec part{buffer.data(), buffer.size()};
  msghdr message{};
  message.msg_name = &sender;
  message.msg_namelen = sizeof sender;
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  const ssize_t count = recvmsg(socket.get(), &message, 0);
  if (count < 0 && (errno == EINTR || errno == ENOBUFS)) {
    if (errno == ENOBUFS) reader.lostSome();
    return Received::retry;
  }
  if (count <= 0) return Received::nothing;
  if ((message.msg_flags & MSG_TRUNC) != 0) reader.lostSome();
  // Any process may send to a netlink socket, but only the kernel's messages are answers.
  if (sender.nl_pid != 0) return Received::retry;
  length = static_cast<std::size_t>(count);
  return Received::datagram;
}

SocketListReader::State readAnswer(const Descriptor& socket, SocketListReader& reader) {
  const SteadyTime deadline = std::chrono::steady_clock::now() + kListingTimeout;
  alignas(nlmsghdr) Buffer buffer;
  auto state = SocketListReader::State::more;
  while (state == SocketListReader::State::more && std::chrono::steady_clock::now() < deadline) {
    std::size_t length = 0;
    const Received received = receive(socket, buffer, length, reader);
    if (received == Received::nothing) break;
    if (received == Received::retry) continue;
    state = reader.read(std::span(buffer).first(length));
  }
  return state;
}

}  // namespace

SocketSource::Listing SocketDiagnostics::list(std::vector<SocketRecord>& sockets) {
  sockets.clear();
  const Descriptor socket = openedSocket();
  if (!socket || !ask(socket)) return {errno != 0 ? errno : EIO, Coverage::partial};
  SocketListReader reader(kSequence, sockets);
  switch (readAnswer(socket, reader)) {
    case SocketListReader::State::finished:
      return {0, reader.coverage()};
    case SocketListReader::State::failed:
      sockets.clear();
      return {reader.errorNumber(), Coverage::partial};
    case SocketListReader::State::more:
      break;
  }
  return {0, Coverage::partial};
}

}  // namespace platform

#include "Platform/Linux/Network/SocketListReader.h"

#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/tcp.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>

namespace platform {
namespace {

using Bytes = std::span<const std::byte>;

/// Reads a structure from the front of `bytes`, which may be unaligned.
template <typename Structure>
std::optional<Structure> front(Bytes bytes) {
  if (bytes.size() < sizeof(Structure)) return std::nullopt;
  Structure structure{};
  std::memcpy(&structure, bytes.data(), sizeof(Structure));
  return structure;
}

/// The bytes after an item of `length` bytes. Each item begins at a multiple of four.
Bytes after(Bytes bytes, std::size_t length) {
  return bytes.subspan(std::min(bytes.size(), (length + 3) & ~std::size_t{3}));
}

/// Reads the counters. Those that the shorter structure of an older kernel lacks are 0.
tcp_info counters(Bytes payload) {
  tcp_info info{};
  std::memcpy(&info, payload.data(), std::min(payload.size(), sizeof info));
  return info;
}

std::optional<tcp_info> countersAmong(Bytes attributes) {
  while (const auto attribute = front<rtattr>(attributes)) {
    if (attribute->rta_len < sizeof(rtattr) || attribute->rta_len > attributes.size()) break;
    if (attribute->rta_type == INET_DIAG_INFO) {
      return counters(attributes.first(attribute->rta_len).subspan(sizeof(rtattr)));
    }
    attributes = after(attributes, attribute->rta_len);
  }
  return std::nullopt;
}

}  // namespace

SocketListReader::SocketListReader(std::uint32_t sequence, std::vector<SocketRecord>& sockets)
    : sequence_(sequence), sockets_(sockets) {}

SocketListReader::State SocketListReader::read(Bytes datagram) {
  while (const auto header = front<nlmsghdr>(datagram)) {
    if (header->nlmsg_len < sizeof(nlmsghdr) || header->nlmsg_len > datagram.size()) break;
    const Bytes payload = datagram.first(header->nlmsg_len).subspan(sizeof(nlmsghdr));
    if (header->nlmsg_seq == sequence_) {
      const State state = readMessage(*header, payload);
      if (state != State::more) return state;
    }
    datagram = after(datagram, header->nlmsg_len);
  }
  if (!datagram.empty()) lostSome();
  return State::more;
}

SocketListReader::State SocketListReader::readMessage(const nlmsghdr& header, Bytes payload) {
  if ((header.nlmsg_flags & NLM_F_DUMP_INTR) != 0) lostSome();
  switch (header.nlmsg_type) {
    case NLMSG_DONE:
    case NLMSG_ERROR:
      return readEnd(payload);
    case TCPDIAG_GETSOCK:
    case SOCK_DIAG_BY_FAMILY:
      readSocket(payload);
      return State::more;
    default:
      return State::more;
  }
}

SocketListReader::State SocketListReader::readEnd(Bytes payload) {
  // Both kinds of end begin with a status. It is negative only for an error.
  const int status = front<int>(payload).value_or(0);
  if (status >= 0) return State::finished;
  errorNumber_ = status == INT32_MIN ? EPROTO : -status;
  return State::failed;
}

void SocketListReader::readSocket(Bytes payload) {
  const auto socket = front<inet_diag_msg>(payload);
  if (!socket) return lostSome();
  const auto info = countersAmong(after(payload, sizeof(inet_diag_msg)));
  // The remains of a closed socket still have its cookie, but no counters.
  if (!info) return;
  SocketRecord record;
  record.cookie = std::uint64_t{socket->id.idiag_cookie[1]} << 32 | socket->id.idiag_cookie[0];
  record.inode = socket->idiag_inode;
  record.uid = socket->idiag_uid;
  // Only what the program has read counts, because unread bytes come in bursts that fill the
  // buffer.
  const std::uint64_t unread =
      std::min<std::uint64_t>(socket->idiag_rqueue, info->tcpi_bytes_received);
  record.bytesReceived = info->tcpi_bytes_received - unread;
  record.hasUnread = unread > 0;
  record.bytesSent = info->tcpi_bytes_acked;
  sockets_.push_back(record);
}

}  // namespace platform

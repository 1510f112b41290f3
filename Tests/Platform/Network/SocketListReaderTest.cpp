#include "Platform/Linux/Network/SocketListReader.h"

#include <gtest/gtest.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/tcp.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

namespace platform {
namespace {

using Message = std::vector<std::byte>;
using State = SocketListReader::State;

constexpr std::uint32_t kSequence = 77;

template <typename Structure>
void append(Message& bytes, const Structure& structure) {
  const auto raw = std::as_bytes(std::span(&structure, 1));
  bytes.insert(bytes.end(), raw.begin(), raw.end());
}

void pad(Message& bytes) {
  bytes.resize((bytes.size() + 3) & ~std::size_t{3});
}

Message attribute(std::uint16_t type, const Message& value) {
  Message bytes;
  append(bytes, rtattr{static_cast<std::uint16_t>(sizeof(rtattr) + value.size()), type});
  bytes.insert(bytes.end(), value.begin(), value.end());
  pad(bytes);
  return bytes;
}

/// The counters of a kernel whose structure has `length` bytes.
Message counters(std::uint64_t received, std::uint64_t acked,
                 std::size_t length = sizeof(tcp_info)) {
  tcp_info info{};
  info.tcpi_bytes_received = received;
  info.tcpi_bytes_acked = acked;
  Message bytes;
  append(bytes, info);
  bytes.resize(length);
  return bytes;
}

Message message(std::uint16_t type, const Message& payload, std::uint32_t sequence = kSequence,
                std::uint16_t flags = NLM_F_MULTI) {
  Message bytes;
  append(bytes, nlmsghdr{static_cast<std::uint32_t>(sizeof(nlmsghdr) + payload.size()), type, flags,
                         sequence, 0});
  bytes.insert(bytes.end(), payload.begin(), payload.end());
  pad(bytes);
  return bytes;
}

Message socketPayload(std::uint32_t inode, const Message& attributes, std::uint32_t unread = 0) {
  inet_diag_msg socket{};
  socket.idiag_rqueue = unread;
  socket.idiag_inode = inode;
  socket.idiag_uid = 1000;
  socket.id.idiag_cookie[0] = inode;
  socket.id.idiag_cookie[1] = 2;
  Message bytes;
  append(bytes, socket);
  bytes.insert(bytes.end(), attributes.begin(), attributes.end());
  return bytes;
}

Message socketMessage(std::uint32_t inode, std::uint64_t received, std::uint64_t acked) {
  return message(TCPDIAG_GETSOCK,
                 socketPayload(inode, attribute(INET_DIAG_INFO, counters(received, acked))));
}

Message status(std::uint16_t type, int number) {
  Message payload;
  append(payload, number);
  return message(type, payload);
}

Message operator+(Message left, const Message& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

class SocketListReaderTest : public ::testing::Test {
 protected:
  State read(const Message& datagram) { return reader_.read(datagram); }

  std::vector<SocketRecord> sockets_;
  SocketListReader reader_{kSequence, sockets_};
};

TEST_F(SocketListReaderTest, ReadsASocket) {
  EXPECT_EQ(read(socketMessage(41, 1234, 567)), State::more);
  ASSERT_EQ(sockets_.size(), 1U);
  EXPECT_EQ(sockets_[0].cookie, 0x2'0000'0029U);
  EXPECT_EQ(sockets_[0].inode, 41U);
  EXPECT_EQ(sockets_[0].uid, 1000U);
  EXPECT_EQ(sockets_[0].bytesReceived, 1234U);
  EXPECT_EQ(sockets_[0].bytesSent, 567U);
}

TEST_F(SocketListReaderTest, ReadsSeveralSocketsOfOneDatagramUpToTheEnd) {
  EXPECT_EQ(read(socketMessage(1, 1, 0) + socketMessage(2, 2, 0) + status(NLMSG_DONE, 0)),
            State::finished);
  ASSERT_EQ(sockets_.size(), 2U);
  EXPECT_EQ(sockets_[1].bytesReceived, 2U);
  EXPECT_EQ(reader_.coverage(), Coverage::complete);
}

TEST_F(SocketListReaderTest, FindsTheCountersAmongOtherAttributes) {
  read(message(TCPDIAG_GETSOCK, socketPayload(41, attribute(INET_DIAG_SHUTDOWN, Message(1)) +
                                                      attribute(INET_DIAG_INFO, counters(8, 9)) +
                                                      attribute(INET_DIAG_CGROUP_ID, Message(8)))));
  ASSERT_EQ(sockets_.size(), 1U);
  EXPECT_EQ(sockets_[0].bytesReceived, 8U);
}

TEST_F(SocketListReaderTest, ReadsTheLongerCountersOfANewerKernel) {
  const Message longer = counters(8, 9, sizeof(tcp_info) + 64);
  read(message(TCPDIAG_GETSOCK, socketPayload(41, attribute(INET_DIAG_INFO, longer))));
  ASSERT_EQ(sockets_.size(), 1U);
  EXPECT_EQ(sockets_[0].bytesReceived, 8U);
  EXPECT_EQ(sockets_[0].bytesSent, 9U);
}

TEST_F(SocketListReaderTest, ReadsZeroFromTheShorterCountersOfAnOlderKernel) {
  const Message shorter = counters(8, 9, offsetof(tcp_info, tcpi_bytes_received));
  read(message(TCPDIAG_GETSOCK, socketPayload(41, attribute(INET_DIAG_INFO, shorter))));
  ASSERT_EQ(sockets_.size(), 1U);
  EXPECT_EQ(sockets_[0].bytesReceived, 0U);
  EXPECT_EQ(sockets_[0].bytesSent, 9U);
}

TEST_F(SocketListReaderTest, LeavesOutASocketWithoutCounters) {
  read(message(TCPDIAG_GETSOCK, socketPayload(41, {})));
  EXPECT_TRUE(sockets_.empty());
  EXPECT_EQ(reader_.coverage(), Coverage::complete);
}

TEST_F(SocketListReaderTest, TellsTheErrorThatTheKernelAnswersWith) {
  EXPECT_EQ(read(status(NLMSG_ERROR, -ENOENT)), State::failed);
  EXPECT_EQ(reader_.errorNumber(), ENOENT);
}

TEST_F(SocketListReaderTest, TellsTheErrorThatAListingEndsWith) {
  EXPECT_EQ(read(status(NLMSG_DONE, -EPERM)), State::failed);
  EXPECT_EQ(reader_.errorNumber(), EPERM);
}

TEST_F(SocketListReaderTest, TreatsAnEndWithoutStatusAsSuccess) {
  EXPECT_EQ(read(message(NLMSG_DONE, {})), State::finished);
}

TEST_F(SocketListReaderTest, IsPartialWhenTheTableChangedMeanwhile) {
  const Message payload = socketPayload(41, attribute(INET_DIAG_INFO, counters(8, 9)));
  read(message(TCPDIAG_GETSOCK, payload, kSequence, NLM_F_MULTI | NLM_F_DUMP_INTR));
  EXPECT_EQ(sockets_.size(), 1U);
  EXPECT_EQ(reader_.coverage(), Coverage::partial);
}

TEST_F(SocketListReaderTest, DoesNotLookAtAnswersToOtherRequests) {
  const Message payload = socketPayload(41, attribute(INET_DIAG_INFO, counters(8, 9)));
  EXPECT_EQ(read(message(TCPDIAG_GETSOCK, payload, kSequence + 1) +
                 message(NLMSG_DONE, Message(4), kSequence + 1)),
            State::more);
  EXPECT_TRUE(sockets_.empty());
}

TEST_F(SocketListReaderTest, SkipsMessagesOfOtherKinds) {
  EXPECT_EQ(read(message(NLMSG_NOOP, {}) + socketMessage(41, 8, 9)), State::more);
  EXPECT_EQ(sockets_.size(), 1U);
}

TEST_F(SocketListReaderTest, SurvivesEveryCutOfADatagram) {
  const Message whole = socketMessage(1, 10, 10) + socketMessage(2, 20, 20) + status(NLMSG_DONE, 0);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    std::vector<SocketRecord> sockets;
    SocketListReader reader(kSequence, sockets);
    // A buffer of exactly this length, so that reading beyond it is noticed.
    const Message cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_EQ(reader.read(cut), State::more) << length;
    EXPECT_LE(sockets.size(), 2U);
  }
}

TEST_F(SocketListReaderTest, IsPartialWhenAMessageIsCutOff) {
  Message datagram = socketMessage(1, 10, 10) + socketMessage(2, 20, 20);
  datagram.resize(datagram.size() - 8);
  EXPECT_EQ(read(datagram), State::more);
  EXPECT_EQ(sockets_.size(), 1U);
  EXPECT_EQ(reader_.coverage(), Coverage::partial);
}

TEST_F(SocketListReaderTest, IsPartialWhenASocketIsTooShort) {
  read(message(TCPDIAG_GETSOCK, Message(12)) + socketMessage(2, 20, 20));
  EXPECT_EQ(sockets_.size(), 1U);
  EXPECT_EQ(reader_.coverage(), Coverage::partial);
}

TEST_F(SocketListReaderTest, StopsAtAnImpossibleLength) {
  for (const std::uint32_t length : {0U, 1U, 15U, 1'000'000U, 0xFFFF'FFFFU}) {
    Message datagram = socketMessage(1, 10, 10);
    std::memcpy(datagram.data(), &length, sizeof length);
    std::vector<SocketRecord> sockets;
    SocketListReader reader(kSequence, sockets);
    EXPECT_EQ(reader.read(datagram), State::more);
    EXPECT_TRUE(sockets.empty());
    EXPECT_EQ(reader.coverage(), Coverage::partial);
  }
}

TEST_F(SocketListReaderTest, StopsAtAnImpossibleAttributeLength) {
  for (const std::uint16_t length : std::vector<std::uint16_t>{0, 1, 3, 60'000, 65'535}) {
    Message attributes = attribute(INET_DIAG_INFO, counters(8, 9));
    std::memcpy(attributes.data(), &length, sizeof length);
    read(message(TCPDIAG_GETSOCK, socketPayload(41, attributes)));
    EXPECT_TRUE(sockets_.empty()) << length;
  }
}

TEST_F(SocketListReaderTest, CountsReadBytesButNotWaitingOnes) {
  const Message info = attribute(INET_DIAG_INFO, counters(1000, 5));
  read(message(TCPDIAG_GETSOCK, socketPayload(7, info, 300)) +
       message(TCPDIAG_GETSOCK, socketPayload(8, info, 5000)));
  ASSERT_EQ(sockets_.size(), 2U);
  EXPECT_EQ(sockets_[0].bytesReceived, 700U);
  EXPECT_EQ(sockets_[1].bytesReceived, 0U);
}

TEST_F(SocketListReaderTest, ReadsAnnouncementsOfClosedSockets) {
  SocketListReader announcements(0, sockets_);
  const Message payload = socketPayload(0, attribute(INET_DIAG_INFO, counters(1000, 5)));
  announcements.read(message(SOCK_DIAG_BY_FAMILY, payload, 0, 0));
  ASSERT_EQ(sockets_.size(), 1U);
  EXPECT_EQ(sockets_[0].bytesReceived, 1000U);
}

}  // namespace
}  // namespace platform

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <optional>
#include <set>
#include <vector>

#include "Platform/Linux/Network/SocketDiagnostics.h"
#include "Tests/Platform/Network/LoopbackServer.h"

namespace platform {
namespace {

/// As long as it exists, the process can open no further descriptor.
class NoMoreDescriptors {
 public:
  NoMoreDescriptors() {
    getrlimit(RLIMIT_NOFILE, &former_);
    const rlimit none{0, former_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
  }
  ~NoMoreDescriptors() { setrlimit(RLIMIT_NOFILE, &former_); }
  NoMoreDescriptors(const NoMoreDescriptors&) = delete;
  NoMoreDescriptors& operator=(const NoMoreDescriptors&) = delete;

 private:
  rlimit former_{};
};

std::uint32_t inodeOf(const Descriptor& socket) {
  struct stat status {};
  fstat(socket.get(), &status);
  return static_cast<std::uint32_t>(status.st_ino);
}

class SocketDiagnosticsLive : public ::testing::Test {
 protected:
  void SetUp() override {
    if (diagnostics_.list(sockets_).errorNumber != 0) {
      GTEST_SKIP() << "this kernel or sandbox lists no sockets";
    }
  }

  std::optional<SocketRecord> record(const Descriptor& socket) {
    EXPECT_EQ(diagnostics_.list(sockets_).errorNumber, 0);
    const auto found = std::ranges::find(sockets_, inodeOf(socket), &SocketRecord::inode);
    return found == sockets_.end() ? std::nullopt : std::optional(*found);
  }

  SocketDiagnostics diagnostics_;
  std::vector<SocketRecord> sockets_;
};

TEST_F(SocketDiagnosticsLive, TellsTheUserAndTheBytesOfASocket) {
  const LoopbackServer server(AF_INET);
  const Descriptor client = server.connect();
  const Descriptor accepted = server.accept();
  ASSERT_TRUE(sendBytes(accepted, 4321));
  ASSERT_TRUE(receiveBytes(client, 4321));
  const auto socket = record(client);
  ASSERT_TRUE(socket);
  EXPECT_EQ(socket->uid, geteuid());
  EXPECT_EQ(socket->bytesReceived, 4321U);
}

TEST_F(SocketDiagnosticsLive, ListsBothFamiliesInOneListing) {
  const LoopbackServer server(AF_INET);
  const LoopbackServer server6(AF_INET6);
  if (!server6.isListening()) GTEST_SKIP() << "no IPv6 here";
  const Descriptor client = server.connect();
  const Descriptor client6 = server6.connect();
  EXPECT_TRUE(record(client));
  EXPECT_TRUE(record(client6));
}

TEST_F(SocketDiagnosticsLive, LeavesOutListeningSockets) {
  const LoopbackServer server(AF_INET);
  EXPECT_FALSE(record(server.listener()));
}

TEST_F(SocketDiagnosticsLive, ListsHundredsOfSocketsEachWithACookieOfItsOwn) {
  const LoopbackServer server(AF_INET);
  std::vector<Descriptor> ends;
  for (int count = 0; count < 400; ++count) {
    ends.push_back(server.connect());
    ends.push_back(server.accept());
    ASSERT_TRUE(ends[ends.size() - 2]);
    ASSERT_TRUE(ends.back());
  }
  const auto listing = diagnostics_.list(sockets_);
  EXPECT_EQ(listing.errorNumber, 0);
  std::set<std::uint64_t> cookies;
  std::set<std::uint32_t> inodes;
  for (const SocketRecord& socket : sockets_) {
    cookies.insert(socket.cookie);
    inodes.insert(socket.inode);
  }
  EXPECT_EQ(cookies.size(), sockets_.size());
  for (const Descriptor& end : ends)
    EXPECT_TRUE(inodes.contains(inodeOf(end)));
}

TEST_F(SocketDiagnosticsLive, KeepsTheCookieOfAConnectionFromListingToListing) {
  const LoopbackServer server(AF_INET);
  const Descriptor client = server.connect();
  const auto first = record(client);
  const auto second = record(client);
  ASSERT_TRUE(first);
  ASSERT_TRUE(second);
  EXPECT_EQ(first->cookie, second->cookie);
  EXPECT_NE(first->cookie, 0U);
}

TEST_F(SocketDiagnosticsLive, SaysWhyItCannotAsk) {
  const NoMoreDescriptors noMore;
  sockets_.resize(3);
  EXPECT_EQ(diagnostics_.list(sockets_).errorNumber, EMFILE);
  EXPECT_TRUE(sockets_.empty());
}

}  // namespace
}  // namespace platform

#include "Platform/Linux/Sleep/XServer.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <string>

#include "Tests/Platform/Support/FakeXServer.h"
#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

using namespace testing;  // NOLINT: the fixtures' names
using namespace std::chrono_literals;

/// An entry of an authority file.
std::string authority(const std::string& number, const std::string& name,
                      const std::string& cookie) {
  std::string entry("\x01\x00", 2);
  for (const std::string& part : {std::string("machine"), number, name, cookie}) {
    entry += '\0';
    entry += static_cast<char>(part.size());
    entry += part;
  }
  return entry;
}

TEST(XServerTest, TellsHowLongNobodyHasBeenThere) {
  FakeXServer fake(90s);
  auto server = XServer::connect(fake.address());
  ASSERT_TRUE(server);
  EXPECT_EQ(server->idleTime(), 90s);
}

TEST(XServerTest, CountsAnewWhenItIsTold) {
  FakeXServer fake(90s);
  {
    auto server = XServer::connect(fake.address());
    ASSERT_TRUE(server);
    EXPECT_TRUE(server->restartIdleTime());
    EXPECT_EQ(server->idleTime(), 0s);
  }
  EXPECT_EQ(fake.restarts(), 1);
}

TEST(XServerTest, LetsInWhoHasTheCookie) {
  FakeXServer fake(1s, "0123456789abcdef");
  EXPECT_TRUE(XServer::connect(fake.address("0123456789abcdef")));
  EXPECT_FALSE(XServer::connect(fake.address("0123456789abcdeX")));
}

TEST(XServerTest, MayNotKnowHowLongNobodyHasBeenThere) {
  FakeXServer fake(90s, "", false);
  auto server = XServer::connect(fake.address());
  ASSERT_TRUE(server);
  EXPECT_FALSE(server->idleTime());
}

TEST(XServerTest, MayNotBeThere) {
  const TemporaryFolder folder;
  EXPECT_FALSE(XServer::connect({folder.path("X"), ""}));
  EXPECT_FALSE(XServer::connect({std::string(300, 'x'), ""}));
}

TEST(XServerTest, TheCookieIsThatOfTheDisplay) {
  const std::string file = authority("1", "MIT-MAGIC-COOKIE-1", "of 1") +
                           authority("0", "XDM-AUTHORIZATION-1", "another") +
                           authority("0", "MIT-MAGIC-COOKIE-1", "of 0");
  EXPECT_EQ(xCookie(file, "0"), "of 0");
  EXPECT_EQ(xCookie(file, "1"), "of 1");
  EXPECT_EQ(xCookie(file, "2"), "");
  EXPECT_EQ(xCookie(authority("", "MIT-MAGIC-COOKIE-1", "of all"), "7"), "of all");
}

TEST(XServerTest, ADamagedAuthorityFileHasNoCookie) {
  const std::string file = authority("0", "MIT-MAGIC-COOKIE-1", "of 0");
  for (std::size_t length = 0; length < file.size(); ++length)
    EXPECT_EQ(xCookie(file.substr(0, length), "0"), "") << length;
}

TEST(XServerTest, TheEnvironmentNamesTheServer) {
  const TemporaryFolder folder;
  const ScopedEnvironment file(
      "XAUTHORITY",
      folder.write("authority", authority("3", "MIT-MAGIC-COOKIE-1", "of 3")).c_str());
  const ScopedEnvironment display("DISPLAY", ":3.0");
  const auto address = XAddress::ofEnvironment();
  ASSERT_TRUE(address);
  EXPECT_EQ(address->socket, "/tmp/.X11-unix/X3");
  EXPECT_EQ(address->cookie, "of 3");
}

TEST(XServerTest, AnAuthorityFileThatIsAPipeIsNotWaitedFor) {
  const TemporaryFolder folder;
  const std::string pipe = folder.path("authority");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const ScopedEnvironment file("XAUTHORITY", pipe);
  const ScopedEnvironment display("DISPLAY", ":3");
  const auto address = XAddress::ofEnvironment();
  ASSERT_TRUE(address);
  EXPECT_EQ(address->cookie, "");
}

TEST(XServerTest, AServerOfAnotherMachineIsNotAsked) {
  for (const char* name : {"", ":", "other:0", ":0/../x", "localhost:10.0"}) {
    const ScopedEnvironment display("DISPLAY", name);
    EXPECT_FALSE(XAddress::ofEnvironment()) << name;
  }
}

}  // namespace
}  // namespace platform

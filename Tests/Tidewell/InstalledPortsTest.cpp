#include <gtest/gtest.h>

#include "Tests/Fakes/FakePorts.h"
#include "Tidewell/Ports/Ports.h"

namespace tidewell {
namespace {

TEST(InstalledPorts, AreThePortsThatWereInstalledLast) {
  const FakePorts outer;
  EXPECT_EQ(&InstalledPorts::current(), &outer.ports);
  {
    const FakePorts inner;
    EXPECT_EQ(&InstalledPorts::current(), &inner.ports);
  }
  EXPECT_EQ(&InstalledPorts::current(), &outer.ports);
}

TEST(InstalledPorts, AreNullWhenTheFirstOnesAreRemoved) {
  { const FakePorts fakes; }
  EXPECT_EQ(InstalledPorts::currentIfAny(), nullptr);
}

TEST(InstalledPorts, HaveAnotherGenerationAfterEveryInstallationAndRemoval) {
  const auto before = InstalledPorts::generation();
  std::uint64_t during = 0;
  {
    const FakePorts fakes;
    during = InstalledPorts::generation();
  }
  EXPECT_NE(before, during);
  EXPECT_NE(during, InstalledPorts::generation());
  EXPECT_NE(before, InstalledPorts::generation());
}

TEST(InstalledPortsDeathTest, EndTheProcessWhenThereAreNone) {
  EXPECT_DEATH(InstalledPorts::current(), "fatal error: no ports are installed");
}

}  // namespace
}  // namespace tidewell

#include "Platform/Linux/Proc/OwnRights.h"

#include <gtest/gtest.h>

#include <string>

namespace platform {
namespace {

/// As the kernel writes it, with these effective rights.
std::string statusWith(const std::string& rights) {
  return "Name:\tstaylit\nCapPrm:\tffffffffffffffff\nCapEff:\t" + rights +
         "\nCapBnd:\tffffffffffffffff\n";
}

TEST(OwnRights, BothCapabilitiesAreNeeded) {
  EXPECT_TRUE(mayReadAllProcesses(statusWith("0000000000080004")));
  EXPECT_TRUE(mayReadAllProcesses(statusWith("000001ffffffffff")));
  EXPECT_FALSE(mayReadAllProcesses(statusWith("0000000000080000")));
  EXPECT_FALSE(mayReadAllProcesses(statusWith("0000000000000004")));
  EXPECT_FALSE(mayReadAllProcesses(statusWith("0000000000000000")));
}

TEST(OwnRights, WhatCannotBeReadIsNoRight) {
  EXPECT_FALSE(mayReadAllProcesses(statusWith("")));
  EXPECT_FALSE(mayReadAllProcesses("Name:\tstaylit\n"));
  EXPECT_FALSE(mayReadAllProcesses(""));
}

}  // namespace
}  // namespace platform

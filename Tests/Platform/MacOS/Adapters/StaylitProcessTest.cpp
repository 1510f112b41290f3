#include "Platform/MacOS/Processes/StaylitProcess.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace platform {
namespace {

TEST(StaylitProcess, IsOneThatRunsTheSameProgram) {
  EXPECT_TRUE(isAStaylit(getpid()));
}

TEST(StaylitProcess, IsNoOther) {
  EXPECT_FALSE(isAStaylit(getppid()));
  EXPECT_FALSE(isAStaylit(1));
  EXPECT_FALSE(isAStaylit(-1));
}

}  // namespace
}  // namespace platform

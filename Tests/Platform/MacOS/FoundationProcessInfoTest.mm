#include "Platform/MacOS/Processes/FoundationProcessInfo.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "Platform/MacOS/Processes/ProgramPath.h"

namespace platform {
namespace {

TEST(FoundationProcessInfo, NamesThisProcessByItsProgram) {
  const std::string path = programPath(getpid());
  EXPECT_EQ(FoundationProcessInfo().processName(), path.substr(path.rfind('/') + 1));
}

TEST(ProgramPath, IsEmptyForAProcessThatIsNotThere) { EXPECT_EQ(programPath(-5), ""); }

}  // namespace
}  // namespace platform

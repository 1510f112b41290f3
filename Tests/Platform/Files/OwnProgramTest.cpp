#include "Platform/Linux/Files/OwnProgram.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

TEST(OwnProgram, IsTheFileThatRuns) {
  EXPECT_EQ(ownProgram().filename(), "platform-files-tests");
  EXPECT_TRUE(std::filesystem::exists(ownProgram()));
}

TEST(OwnProgram, KeepsItsNameWhenItsFileIsReplaced) {
  EXPECT_EQ(programOfLink("/opt/staylit (deleted)"), "/opt/staylit");
  EXPECT_EQ(programOfLink("/opt/staylit"), "/opt/staylit");
}

TEST(OwnProgram, MayBeCalledDeleted) {
  const testing::TemporaryFolder folder;
  folder.write("staylit (deleted)", "");
  const auto path = folder.path() / "staylit (deleted)";
  EXPECT_EQ(programOfLink(path.native()), path);
}

}  // namespace
}  // namespace platform

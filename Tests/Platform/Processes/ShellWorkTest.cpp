#include "Platform/Linux/Processes/ShellWork.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace platform {
namespace {

using Kind = ShellWork::Kind;

std::string joined(const std::vector<std::string>& arguments) {
  std::string text;
  for (const std::string& argument : arguments)
    text.append(argument).push_back('\0');
  return text;
}

/// The script's name, or in brackets what else the shell does.
std::string work(const std::vector<std::string>& arguments) {
  const std::string text = joined(arguments);
  const ShellWork work = shellWork(text);
  if (work.kind == Kind::script) return std::string(work.script);
  return work.kind == Kind::command ? "(command)" : "(prompt)";
}

TEST(ShellWorkTest, KnowsShells) {
  EXPECT_TRUE(isShell("sh", ""));
  EXPECT_TRUE(isShell("bash", ""));
  EXPECT_FALSE(isShell("python3", ""));
  EXPECT_FALSE(isShell("bashful", ""));
  EXPECT_FALSE(isShell("", ""));
  EXPECT_FALSE(isShell("python3", "sh"));
  EXPECT_TRUE(isShell("busybox", "sh"));
  EXPECT_FALSE(isShell("busybox", "wget"));
}

TEST(ShellWorkTest, AScriptIsTheFirstArgumentThatIsNoOption) {
  EXPECT_EQ(work({"/bin/sh", "./build.sh", "-c", "x"}), "build.sh");
  EXPECT_EQ(work({"bash", "-eux", "/home/me/nightly backup", "all"}), "nightly backup");
  EXPECT_EQ(work({"bash", "-o", "pipefail", "+O", "extglob", "run"}), "run");
  EXPECT_EQ(work({"bash", "--rcfile", "some-file", "--posix", "job"}), "job");
  EXPECT_EQ(work({"bash", "-euo", "pipefail", "./build.sh"}), "build.sh");
  EXPECT_EQ(work({"bash", "--noprofile", "--norc", "-eo", "pipefail", "x.sh"}), "x.sh");
  EXPECT_EQ(work({"sh", "--", "-odd"}), "-odd");
  EXPECT_EQ(work({"sh", "-", "job"}), "job");
}

TEST(ShellWorkTest, ACommandIsGivenByAnOption) {
  EXPECT_EQ(work({"sh", "-c", "make all"}), "(command)");
  EXPECT_EQ(work({"bash", "-lc", "make"}), "(command)");
  EXPECT_EQ(work({"bash", "-e", "-c", "make"}), "(command)");
  EXPECT_EQ(work({"bash", "-eo", "pipefail", "-c", "make"}), "(command)");
  EXPECT_EQ(work({"fish", "--command", "make"}), "(command)");
  EXPECT_EQ(work({"fish", "--command=make"}), "(command)");
}

TEST(ShellWorkTest, EverythingElseIsAPrompt) {
  EXPECT_EQ(work({}), "(prompt)");
  EXPECT_EQ(work({"-bash"}), "(prompt)");
  EXPECT_EQ(work({"bash", "--norc", "-i"}), "(prompt)");
  EXPECT_EQ(work({"sh", "-s"}), "(prompt)");
  EXPECT_EQ(work({"sh", "--"}), "(prompt)");
  EXPECT_EQ(work({"sh", "folder/"}), "(prompt)");
  EXPECT_EQ(work({"sh", ""}), "(prompt)");
  EXPECT_EQ(work({"bash", "-o"}), "(prompt)");
}

TEST(ShellWorkTest, ReadsALineThatIsCutOff) {
  EXPECT_EQ(std::string(shellWork(std::string_view("sh\0./bui", 8)).script), "bui");
}

}  // namespace
}  // namespace platform

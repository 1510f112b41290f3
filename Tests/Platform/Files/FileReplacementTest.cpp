#include "Platform/Linux/Files/FileReplacement.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <thread>

#include "Platform/Linux/Files/ReadLease.h"
#include "Platform/Posix/Files/Descriptor.h"
#include "Tests/Platform/ChildProcess.h"
#include "Tests/Platform/Settings/SettingsFolder.h"

namespace platform {
namespace {

using Names = std::vector<std::string>;
using Outcome = FileReplacement::Outcome;

RegularFile readOf(const SettingsFolder& folder) {
  return readRegularFile(folder.file(), 1000);
}

TEST(FileReplacement, LeavesTheOldFileWholeWhenTheProgramDiesBeforeTheRename) {
  const SettingsFolder folder;
  folder.write("a = 1\n");
  ChildProcess child([&folder] {
    const FileReplacement replacement(folder.file(), "a = 2\n");
    _exit(replacement.error().empty() ? 0 : 1);  // The destructor does not run.
  });
  ASSERT_TRUE(child.wait());
  EXPECT_EQ(folder.names().size(), 2U);  // The temporary file is left over.
  EXPECT_EQ(folder.read(), "a = 1\n");
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  EXPECT_EQ(defaults.integer("a"), 1);
  defaults.setInteger("a", 3);
  defaults.finishWriting();
  EXPECT_EQ(folder.read(), "a = 3\n");
  EXPECT_EQ(folder.logged(), Names{});
}

TEST(FileReplacement, RemovesItsTemporaryFileWhenItIsDropped) {
  const SettingsFolder folder;
  folder.write("a");
  { const FileReplacement replacement(folder.file(), "b"); }
  EXPECT_EQ(folder.names(), Names{"settings.toml"});
  EXPECT_EQ(folder.read(), "a");
}

TEST(FileReplacement, LeavesAFileOfOthersThatHasItsTemporaryName) {
  const SettingsFolder folder;
  folder.write("a");
  std::string temporary;
  {
    const FileReplacement replacement(folder.file(), "b");
    temporary =
        (std::filesystem::path(folder.file()).parent_path() / folder.names().front()).string();
    ASSERT_NE(temporary, folder.file());
    folder.write("c");
    std::filesystem::rename(folder.file(), temporary);
  }
  EXPECT_EQ(readRegularFile(temporary, 1000).text, "c");
}

TEST(FileReplacement, SaysWhyItCannotReplaceTheFile) {
  const SettingsFolder folder;
  mkdir(folder.file().c_str(), 0700);
  FileReplacement replacement(folder.file(), "b");
  EXPECT_FALSE(replacement.commit());
  EXPECT_EQ(replacement.error(), "Is a directory");
}

constexpr unsigned kNobody = 65534;
constexpr unsigned kForeignGroup = 4711;

struct stat statusOf(const std::string& path) {
  struct stat status {};
  stat(path.c_str(), &status);
  return status;
}

TEST(FileReplacement, GivesItsOwnGroupNoRightsOfAGroupThatItCannotKeep) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can act as another user";
  const SettingsFolder folder;
  folder.write("a");
  ASSERT_EQ(chown(folder.file().c_str(), kNobody, kForeignGroup), 0);
  ASSERT_EQ(chmod(folder.file().c_str(), 0664), 0);
  ASSERT_EQ(chown(std::filesystem::path(folder.file()).parent_path().c_str(), kNobody, kNobody), 0);
  const std::string outcome = asOrdinaryUser([&folder] {
    FileReplacement replacement(folder.file(), "b");
    return replacement.commit() ? "done" : replacement.error();
  });
  EXPECT_EQ(outcome, "done");
  const struct stat status = statusOf(folder.file());
  EXPECT_EQ(status.st_gid, kNobody);
  EXPECT_EQ(status.st_mode & 07777U, 0644U);
}

TEST(FileReplacement, KeepsTheOwnerTheGroupAndTheModeOfTheFileForRoot) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a file away";
  const SettingsFolder folder;
  folder.write("a");
  ASSERT_EQ(chown(folder.file().c_str(), kNobody, kForeignGroup), 0);
  ASSERT_EQ(chmod(folder.file().c_str(), 0664), 0);
  FileReplacement replacement(folder.file(), "b");
  ASSERT_TRUE(replacement.commit());
  const struct stat status = statusOf(folder.file());
  EXPECT_EQ(status.st_uid, kNobody);
  EXPECT_EQ(status.st_gid, kForeignGroup);
  EXPECT_EQ(status.st_mode & 07777U, 0664U);
}

TEST(FileReplacement, ReplacesAFileThatIsStillAsItWasRead) {
  const SettingsFolder folder;
  folder.write("a");
  FileReplacement replacement(folder.file(), "b");
  EXPECT_EQ(replacement.commitOver(readOf(folder)), Outcome::done);
  EXPECT_EQ(folder.read(), "b");
  EXPECT_EQ(folder.names(), Names{"settings.toml"});
}

TEST(FileReplacement, LeavesAFileThatWasChangedSinceItWasRead) {
  const SettingsFolder folder;
  folder.write("a");
  const RegularFile read = readOf(folder);
  folder.writeJustNow("x");
  {
    FileReplacement replacement(folder.file(), "b");
    EXPECT_EQ(replacement.commitOver(read), Outcome::changed);
  }
  EXPECT_EQ(folder.read(), "x");
  EXPECT_EQ(folder.names(), Names{"settings.toml"});
}

TEST(FileReplacement, LeavesAFileThatAppearedSince) {
  const SettingsFolder folder;
  const RegularFile read = readOf(folder);
  folder.writeJustNow("x");
  FileReplacement replacement(folder.file(), "b");
  EXPECT_EQ(replacement.commitOver(read), Outcome::changed);
  EXPECT_EQ(folder.read(), "x");
}

TEST(FileReplacement, DoesNotBringBackAFileThatWasRemovedSince) {
  const SettingsFolder folder;
  folder.write("a");
  const RegularFile read = readOf(folder);
  std::filesystem::remove(folder.file());
  FileReplacement replacement(folder.file(), "b");
  EXPECT_EQ(replacement.commitOver(read), Outcome::changed);
  EXPECT_FALSE(std::filesystem::exists(folder.file()));
}

/// Whether the file system of the tests' folder grants leases.
bool knowsLeases(const SettingsFolder& folder) {
  const Descriptor writer(open(folder.file().c_str(), O_WRONLY | O_CLOEXEC));
  return ReadLease(folder.file()).isRefused();
}

TEST(FileReplacement, IsBusyWhileAWriterHasTheFileOpen) {
  const SettingsFolder folder;
  folder.write("a");
  if (!knowsLeases(folder)) GTEST_SKIP() << "no leases in this file system";
  const RegularFile read = readOf(folder);
  FileReplacement replacement(folder.file(), "b");
  {
    const Descriptor writer(open(folder.file().c_str(), O_WRONLY | O_CLOEXEC));
    EXPECT_EQ(replacement.commitOver(read), Outcome::busy);
  }
  EXPECT_EQ(folder.read(), "a");
  EXPECT_EQ(replacement.commitOver(read), Outcome::done);
}

/// Makes the kernel refuse this process every lease from now on, as a file server does that grants
/// none.
bool refuseLeases() {
  constexpr unsigned command = offsetof(seccomp_data, args) + sizeof(__u64);
  sock_filter rules[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_fcntl, 0, 3),
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, command),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, F_SETLEASE, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EAGAIN),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog program = {static_cast<unsigned short>(std::size(rules)), rules};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

TEST(FileReplacement, ReplacesAFileWhenNoLeaseIsEverGranted) {
  const SettingsFolder folder;
  folder.write("a");
  const std::string told = inChild([&folder]() -> std::string {
    if (!refuseLeases()) return "cannot refuse";
    if (!ReadLease(folder.file()).isRefused()) return "not refused";
    FileReplacement replacement(folder.file(), "b");
    return replacement.commitOver(readOf(folder)) == Outcome::done ? "done" : "not done";
  });
  if (told == "cannot refuse") GTEST_SKIP() << "system calls cannot be filtered here";
  EXPECT_EQ(told, "done");
  EXPECT_EQ(folder.read(), "b");
}

TEST(ReadLease, TellsOfAWaitingWriterAndLetsTheWriterGoOn) {
  const SettingsFolder folder;
  folder.write("a");
  if (!knowsLeases(folder)) GTEST_SKIP() << "no leases in this file system";
  std::optional<ReadLease> lease(folder.file());
  EXPECT_FALSE(lease->isRefused());
  EXPECT_FALSE(lease->isWanted());
  std::thread writer([&folder] { folder.writeJustNow("b"); });
  while (!lease->isWanted())
    std::this_thread::yield();
  EXPECT_EQ(folder.read(), "a");
  lease.reset();
  writer.join();
  EXPECT_EQ(folder.read(), "b");
}

}  // namespace
}  // namespace platform

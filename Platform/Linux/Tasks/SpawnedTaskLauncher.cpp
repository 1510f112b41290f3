#include "Platform/Linux/Tasks/SpawnedTaskLauncher.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <memory>
#include <system_error>
#include <utility>

#include "Platform/Linux/Files/Descriptor.h"
#include "Platform/Linux/Tasks/SpawnedTask.h"

namespace platform {
namespace {

using Launch = tidewell::TaskLauncher::Launch;

Launch failure(int errorNumber) {
  return {nullptr, std::generic_category().message(errorNumber)};
}

/// What the child's descriptors become.
class FileActions {
 public:
  explicit FileActions(int standardOutput) {
    posix_spawn_file_actions_init(&actions_);
    // The pipe first: its number may be one of those that are opened over.
    posix_spawn_file_actions_adddup2(&actions_, standardOutput, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
  }
  ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_{};
};

/// No signal blocked, none ignored, whatever the launching thread does.
class SpawnAttributes {
 public:
  SpawnAttributes() {
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_init(&attributes_);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setsigdefault(&attributes_, &all);
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;
  [[nodiscard]] const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_{};
};

/// The form in which the system takes them; it does not write to the texts.
std::vector<char*> argumentPointers(const std::string& executable,
                                    const std::vector<std::string>& arguments) {
  std::vector<char*> pointers;
  pointers.reserve(arguments.size() + 2);
  pointers.push_back(const_cast<char*>(executable.c_str()));
  for (const std::string& argument : arguments) {
    pointers.push_back(const_cast<char*>(argument.c_str()));
  }
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

Launch SpawnedTaskLauncher::launch(const std::string& executable,
                                   const std::vector<std::string>& arguments) {
  std::array<int, 2> ends{-1, -1};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return failure(errno);
  Descriptor reading(ends[0]);
  Descriptor writing(ends[1]);
  Descriptor wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!wake) return failure(errno);

  const FileActions actions(writing.get());
  const SpawnAttributes attributes;
  const std::vector<char*> pointers = argumentPointers(executable, arguments);
  pid_t child = 0;
  const int error = posix_spawn(&child, executable.c_str(), actions.get(), attributes.get(),
                                pointers.data(), environ);
  if (error != 0) return failure(error);
  writing.reset();
  return {std::make_unique<SpawnedTask>(child, std::move(reading), std::move(wake)), ""};
}

}  // namespace platform

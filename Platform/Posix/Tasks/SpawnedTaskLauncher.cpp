#include "Platform/Posix/Tasks/SpawnedTaskLauncher.h"

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <memory>
#include <utility>

#include "Platform/Posix/Files/Pipe.h"
#include "Platform/Posix/Tasks/SpawnedTask.h"

extern char** environ;  // NOLINT(readability-redundant-declaration): no header of macOS has it.

namespace platform {
namespace {

/// The descriptors of the child.
class FileActions {
 public:
  explicit FileActions(int standardOutput) {
    posix_spawn_file_actions_init(&actions_);
    // The pipe comes first, because the later actions may replace its number.
    posix_spawn_file_actions_adddup2(&actions_, standardOutput, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    closeOthers();
  }
  ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
#ifdef __APPLE__
  void closeOthers() {}  // On macOS an attribute does it.
#else
  void closeOthers() {
    posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
  }
#endif

  posix_spawn_file_actions_t actions_{};
};

/// The child has no signal blocked or ignored, even if the launching thread has.
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
    posix_spawnattr_setflags(&attributes_, kFlags);
  }
  ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;
  [[nodiscard]] const posix_spawnattr_t* get() const { return &attributes_; }

 private:
#ifdef __APPLE__
  static constexpr short kFlags =
      POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_CLOEXEC_DEFAULT;
#else
  static constexpr short kFlags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
#endif

  posix_spawnattr_t attributes_{};
};

/// The arguments in the form that the system takes. The system does not write to the texts.
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

tidewell::TaskLauncher::Launch SpawnedTaskLauncher::launch(
    const std::string& executable, const std::vector<std::string>& arguments) {
  Pipe output = Pipe::make();
  Pipe wake = output ? Pipe::make() : Pipe();
  if (!wake) return {nullptr, describe_(errno)};

  const FileActions actions(output.writing.get());
  const SpawnAttributes attributes;
  const std::vector<char*> pointers = argumentPointers(executable, arguments);
  pid_t child = 0;
  const int error = posix_spawn(&child, executable.c_str(), actions.get(), attributes.get(),
                                pointers.data(), environ);
  if (error != 0) return {nullptr, describe_(error)};
  return {std::make_unique<SpawnedTask>(child, std::move(output.reading), std::move(wake)), ""};
}

}  // namespace platform

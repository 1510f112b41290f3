#include "Benchmarks/Crowd.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "Platform/Posix/Files/Pipe.h"

extern char** environ;  // NOLINT(readability-redundant-declaration): no header of macOS has it.

namespace {

constexpr int kNames = 100;

using platform::Descriptor;

/// What is started later has none of it.
Descriptor keptToOneself(int descriptor) {
  fcntl(descriptor, F_SETFD, FD_CLOEXEC);
  return Descriptor(descriptor);
}

pid_t start(const std::string& program, const char* mode, const Descriptor& input) {
  std::string name = program;
  std::string argument = mode;
  char* arguments[] = {name.data(), argument.data(), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input.get(), STDIN_FILENO);
  pid_t pid = 0;
  const int error = posix_spawn(&pid, program.c_str(), &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error("cannot start " + program);
  return pid;
}

}  // namespace

Crowd::Crowd(int processes, int sockets) {
  std::string pattern = (std::filesystem::temp_directory_path() / "crowd-XXXXXX").string();
  folder_ = mkdtemp(pattern.data());
  for (int name = 0; name < kNames; ++name) {
    std::filesystem::copy_file(CROWD_MEMBER, folder_ / ("member-" + std::to_string(name)));
  }
  platform::Pipe input = platform::Pipe::make();
  if (!input) throw std::runtime_error("cannot make a pipe");
  membersInput_ = std::move(input.writing);
  makeGroups();
  for (int index = 0; index < processes; ++index) {
    const std::string program = folder_ / ("member-" + std::to_string(index % kNames));
    members_.push_back(start(program, index % 10 == 0 ? "awake" : "quiet", input.reading));
    if (groups_.empty()) continue;
    std::ofstream(groups_[static_cast<std::size_t>(index % kNames)] / "cgroup.procs")
        << members_.back();
  }
  connectPairs(sockets / 2);
  // A process that is still starting is none of the quiet ones.
  std::this_thread::sleep_for(std::chrono::seconds(3));
}

Crowd::~Crowd() {
  for (const pid_t pid : members_)
    kill(pid, SIGKILL);
  for (const pid_t pid : members_)
    waitpid(pid, nullptr, 0);
  std::filesystem::remove_all(folder_);
  for (const std::filesystem::path& group : groups_)
    rmdir(group.c_str());
}

void Crowd::makeGroups() {
  const char* folder = std::getenv("CROWD_GROUPS");
  if (!folder) return;
  for (int name = 0; name < kNames; ++name) {
    groups_.push_back(std::filesystem::path(folder) / ("crowd-" + std::to_string(name)));
    if (mkdir(groups_.back().c_str(), 0755) != 0) throw std::runtime_error("cannot make a group");
  }
}

void Crowd::connectPairs(int pairs) {
  const Descriptor listener = keptToOneself(socket(AF_INET, SOCK_STREAM, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener.get(), generic, size) != 0 || listen(listener.get(), 128) != 0 ||
      getsockname(listener.get(), generic, &size) != 0) {
    throw std::runtime_error("cannot listen on loopback");
  }
  for (int pair = 0; pair < pairs; ++pair) {
    Descriptor client = keptToOneself(socket(AF_INET, SOCK_STREAM, 0));
    if (connect(client.get(), generic, size) != 0) throw std::runtime_error("cannot connect");
    sockets_.push_back(std::move(client));
    sockets_.push_back(keptToOneself(accept(listener.get(), nullptr, nullptr)));
  }
}

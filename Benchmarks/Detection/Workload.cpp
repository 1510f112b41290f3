#include "Benchmarks/Detection/Workload.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <thread>

namespace {

using namespace std::chrono_literals;

std::optional<pid_t> parentOf(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
  std::string line;
  if (!std::getline(file, line)) return std::nullopt;
  // The name before it may contain anything.
  const std::size_t nameEnd = line.rfind(')');
  int parent = 0;
  if (nameEnd == std::string::npos ||
      std::sscanf(line.c_str() + nameEnd + 1, " %*c %d", &parent) != 1) {
    return std::nullopt;
  }
  return parent;
}

std::multimap<pid_t, pid_t> childrenByParent() {
  std::multimap<pid_t, pid_t> children;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator("/proc", ignored)) {
    const pid_t pid = std::atoi(entry.path().filename().c_str());
    if (pid <= 0) continue;
    if (const auto parent = parentOf(pid)) children.emplace(*parent, pid);
  }
  return children;
}

std::set<pid_t> descendants() {
  const auto children = childrenByParent();
  std::set<pid_t> found;
  std::vector<pid_t> open{getpid()};
  while (!open.empty()) {
    const auto [first, last] = children.equal_range(open.back());
    open.pop_back();
    for (auto child = first; child != last; ++child) {
      if (found.insert(child->second).second) open.push_back(child->second);
    }
  }
  return found;
}

int shellStatus(int status) {
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

Workload::Workload() {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
}

Workload::~Workload() {
  endAll();
}

bool Workload::start(const std::vector<std::string>& command) {
  std::vector<std::string> words = command;
  std::vector<char*> arguments;
  for (std::string& word : words)
    arguments.push_back(word.data());
  arguments.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (int stream = 0; stream < 3; ++stream) {
    posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_RDWR, 0);
  }
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSID);
  const int result =
      posix_spawnp(&pid_, arguments[0], &actions, &attributes, arguments.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  if (result != 0) pid_ = 0;
  return result == 0;
}

bool Workload::reap() {
  int status = 0;
  pid_t pid = 0;
  while ((pid = waitpid(-1, &status, WNOHANG)) > 0) {
    if (pid == pid_) status_ = shellStatus(status);
  }
  return pid == 0;
}

void Workload::endAll() {
  // What is born while the others are killed falls to us and is met on the next round.
  while (reap()) {
    for (const pid_t pid : descendants())
      kill(pid, SIGKILL);
    std::this_thread::sleep_for(5ms);
  }
}

#include "Benchmarks/Detection/WorkloadKeeper.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <thread>
#include <utility>

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

/// Blocks the signal for children that end, and makes it readable.
platform::Descriptor childSignal() {
  sigset_t ends;
  sigemptyset(&ends);
  sigaddset(&ends, SIGCHLD);
  sigprocmask(SIG_BLOCK, &ends, nullptr);
  return platform::Descriptor(signalfd(-1, &ends, SFD_CLOEXEC | SFD_NONBLOCK));
}

/// In a session of its own, with its streams to nowhere; 0 when it cannot be started.
pid_t spawn(std::vector<char*>& arguments) {
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
  pid_t pid = 0;
  const int result =
      posix_spawnp(&pid, arguments[0], &actions, &attributes, arguments.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return result == 0 ? pid : 0;
}

}  // namespace

WorkloadKeeper::WorkloadKeeper(platform::Descriptor socket)
    : socket_(std::move(socket)), childEnds_(childSignal()) {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
}

void WorkloadKeeper::run() {
  std::array<pollfd, 2> inputs{{{socket_.get(), POLLIN, 0}, {childEnds_.get(), POLLIN, 0}}};
  while (true) {
    poll(inputs.data(), inputs.size(), -1);
    signalfd_siginfo info;
    while (read(childEnds_.get(), &info, sizeof info) > 0) {
    }
    reap();
    if (inputs[0].revents != 0 && !obey()) break;
  }
  endAll();
}

/// False when the other end is closed.
bool WorkloadKeeper::obey() {
  std::string order(kLongestMessage, '\0');
  const ssize_t length = recv(socket_.get(), order.data(), order.size(), 0);
  if (length <= 0) return false;
  order.resize(static_cast<std::size_t>(length));
  bool isDone = true;
  if (order[0] == kStart) {
    isDone = start(order.substr(1));
  } else {
    endAll();
  }
  say(std::string(1, isDone ? kDone : kFailed));
  return true;
}

bool WorkloadKeeper::start(const std::string& words) {
  std::string text = words;
  std::vector<char*> arguments;
  for (std::size_t begin = 0; begin < text.size(); begin = text.find('\0', begin) + 1)
    arguments.push_back(text.data() + begin);
  arguments.push_back(nullptr);
  pid_ = spawn(arguments);
  return pid_ != 0;
}

/// Whether anything is left.
bool WorkloadKeeper::reap() {
  int status = 0;
  pid_t pid = 0;
  while ((pid = waitpid(-1, &status, WNOHANG)) > 0) {
    if (pid == pid_) say(kExit + std::to_string(shellStatus(status)));
  }
  return pid == 0;
}

void WorkloadKeeper::endAll() {
  // What is born while the others are killed falls to us and is met on the next round.
  while (reap()) {
    for (const pid_t pid : descendants())
      kill(pid, SIGKILL);
    std::this_thread::sleep_for(5ms);
  }
}

void WorkloadKeeper::say(const std::string& message) {
  send(socket_.get(), message.data(), message.size(), MSG_NOSIGNAL);
}

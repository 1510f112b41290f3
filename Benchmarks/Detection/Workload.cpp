#include "Benchmarks/Detection/Workload.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "Benchmarks/Detection/WorkloadKeeper.h"

Workload::Workload() {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    throw std::runtime_error("cannot make a socket");
  }
  socket_ = platform::Descriptor(ends[0]);
  platform::Descriptor other(ends[1]);
  keeper_ = fork();
  if (keeper_ < 0) throw std::runtime_error("cannot fork");
  if (keeper_ > 0) return;
  socket_ = platform::Descriptor();
  // An interrupt from the terminal is for the harness, which then closes its end.
  setsid();
  WorkloadKeeper(std::move(other)).run();
  _exit(0);
}

Workload::~Workload() {
  socket_ = platform::Descriptor();
  waitpid(keeper_, nullptr, 0);
}

bool Workload::start(const std::vector<std::string>& command) {
  std::string message(1, WorkloadKeeper::kStart);
  for (const std::string& word : command)
    message += word + '\0';
  isStarted_ = message.size() <= WorkloadKeeper::kLongestMessage && order(message);
  return isStarted_;
}

bool Workload::isRunning() {
  while (hear(MSG_DONTWAIT)) {
  }
  return isStarted_ && !status_;
}

void Workload::endAll() {
  order(std::string(1, WorkloadKeeper::kEnd));
}

/// Waits for the answer.
bool Workload::order(const std::string& message) {
  send(socket_.get(), message.data(), message.size(), MSG_NOSIGNAL);
  while (const auto answer = hear(0)) {
    if (answer->front() != WorkloadKeeper::kExit) {
      return answer->front() == WorkloadKeeper::kDone;
    }
  }
  return false;
}

/// The next message; absent when there is none, or nobody who could send one.
std::optional<std::string> Workload::hear(int flags) {
  std::array<char, 64> buffer{};
  const ssize_t length = recv(socket_.get(), buffer.data(), buffer.size(), flags);
  if (length <= 0) return std::nullopt;
  std::string message(buffer.data(), static_cast<std::size_t>(length));
  if (message.front() == WorkloadKeeper::kExit) status_ = std::atoi(message.c_str() + 1);
  return message;
}

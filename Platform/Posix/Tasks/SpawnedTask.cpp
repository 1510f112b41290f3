#include "Platform/Posix/Tasks/SpawnedTask.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <system_error>
#include <thread>
#include <utility>

namespace platform {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 250ms;
constexpr std::size_t kChunkBytes = std::size_t{16} << 10;

/// Reaps a child that cannot end yet, for example because its disk does not answer. When no thread
/// can be started, the child stays a zombie until this process ends.
void reapInBackground(pid_t child) {
  const auto reap = [child] {
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
  };
  try {
    std::thread(reap).detach();
  } catch (const std::system_error&) {
  }
}

}  // namespace

SpawnedTask::SpawnedTask(pid_t child, Descriptor output, Pipe wake)
    : child_(child), output_(std::move(output)), wake_(std::move(wake)) {}

SpawnedTask::~SpawnedTask() {
  output_.reset();
  if (!isRunning()) return;
  signal(SIGTERM);
  if (endsSoon()) return;
  signal(SIGKILL);
  if (!endsSoon()) reapInBackground(child_);
}

std::optional<std::string> SpawnedTask::readToEnd(std::size_t limit) {
  std::string text;
  std::array<char, kChunkBytes> chunk{};
  while (waitForOutput() == Wait::output) {
    const ssize_t count = read(output_.get(), chunk.data(), chunk.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    const auto length = static_cast<std::size_t>(count);
    if (length > limit - text.size()) return std::nullopt;
    text.append(chunk.data(), length);
  }
  return text;
}

SpawnedTask::Wait SpawnedTask::waitForOutput() const {
  std::array<pollfd, 2> watched{pollfd{wake_.reading.get(), POLLIN, 0},
                                pollfd{output_.get(), POLLIN, 0}};
  while (poll(watched.data(), watched.size(), -1) < 0) {
    if (errno != EINTR) return Wait::ended;
  }
  return watched[0].revents != 0 ? Wait::ended : Wait::output;
}

bool SpawnedTask::isRunning() {
  const std::lock_guard guard(lock_);
  if (child_ == 0) return false;
  const pid_t reaped = waitpid(child_, nullptr, WNOHANG);
  if (reaped == 0 || (reaped < 0 && errno == EINTR)) return true;
  child_ = 0;
  return false;
}

void SpawnedTask::terminate() {
  wakeReader();
  signal(SIGTERM);
}

void SpawnedTask::signal(int number) {
  const std::lock_guard guard(lock_);
  if (child_ != 0) kill(child_, number);
}

void SpawnedTask::wakeReader() {
  const std::lock_guard guard(lock_);
  // One byte is enough. Nobody reads it, so every later wait ends at once.
  if (!isWoken_) isWoken_ = write(wake_.writing.get(), "", 1) == 1;
}

bool SpawnedTask::endsSoon() {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  for (auto pause = 1ms; isRunning(); pause *= 2) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    std::this_thread::sleep_for(pause);
  }
  return true;
}

}  // namespace platform

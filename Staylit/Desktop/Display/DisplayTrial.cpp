#include "Staylit/Desktop/Display/DisplayTrial.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string_view>
#include <thread>
#include <utility>

#include "Platform/Linux/Modules/Modules.h"
#include "Staylit/Desktop/Display/WindowsModule.h"
#include "Tidewell/ForeignText.h"

namespace staylit {
namespace {

using Kind = DisplayTrial::Verdict::Kind;
using platform::Descriptor;

// The process tells the outcome of its trial in one line, which begins with one of these.
constexpr std::string_view kUsable = "usable ";
constexpr std::string_view kOfAnotherBuild = "of another build ";
constexpr std::string_view kNotLoadable = "not loadable ";
constexpr std::size_t kLongestLine = 1024;
constexpr std::size_t kLongestReason = 200;  // In characters, of up to four bytes each.

DisplayTrial::Verdict verdictOf(std::string_view line) {
  const auto after = [line](std::string_view start) {
    return tidewell::cleaned(line.substr(start.size()), kLongestReason);
  };
  if (line.starts_with(kUsable)) {
    return {Kind::usable, std::string(line.substr(kUsable.size())), {}};
  }
  if (line.starts_with(kOfAnotherBuild)) return {Kind::ofAnotherBuild, {}, after(kOfAnotherBuild)};
  if (line.starts_with(kNotLoadable)) return {Kind::notLoadable, {}, after(kNotLoadable)};
  return {};
}

struct Pipe {
  Descriptor reading;
  Descriptor writing;
};

Pipe makePipe() {
  std::array<int, 2> ends{-1, -1};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return {};
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

/// Starts `program` for a trial with `input` and `output` as its standard streams, and returns its
/// number; -1 when it cannot be started.
pid_t spawnTrial(const std::string& program, int input, int output) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  std::string name = "staylit";
  std::string option = DisplayTrial::kOption;
  std::array<char*, 3> arguments{name.data(), option.data(), nullptr};
  pid_t process = -1;
  const int error =
      posix_spawn(&process, program.c_str(), &actions, &attributes, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  return error == 0 ? process : -1;
}

void writeLine(int output, const std::string& line) {
  const std::string text = line + "\n";
  if (write(output, text.data(), text.size()) < 0) std::_Exit(EXIT_FAILURE);
}

/// Waits until the program that started the trial closes its end of standard input.
void waitForEndOfInput() {
  char byte = 0;
  while (read(STDIN_FILENO, &byte, 1) > 0) {
  }
}

}  // namespace

DisplayTrial::DisplayTrial(platform::EventLoop& loop, std::function<void(const Verdict&)> done,
                           const std::string& program, tidewell::Seconds patience)
    : loop_(loop), done_(std::move(done)) {
  if (!startProcess(program)) {
    // The caller does not have this object yet, so `done` must wait for the loop.
    patienceTimer_ = loop_.scheduleRepeating(tidewell::Seconds{0.001}, [this] { finish({}); });
    return;
  }
  patienceTimer_ = loop_.scheduleRepeating(patience, [this] { finish({Kind::silent, {}, {}}); });
}

bool DisplayTrial::startProcess(const std::string& program) {
  Pipe input = makePipe();
  Pipe output = makePipe();
  if (!input.reading || !output.reading) return false;
  process_ = spawnTrial(program, input.reading.get(), output.writing.get());
  if (process_ < 0) return false;
  input_ = std::move(input.writing);
  output_ = std::move(output.reading);
  fcntl(output_.get(), F_SETFL, O_NONBLOCK);
  sd_event_source* source = nullptr;
  if (sd_event_add_io(loop_.handle(), &source, output_.get(), EPOLLIN, outputIsReadable, this) <
      0) {
    return false;
  }
  source_ = platform::EventSource(source);
  return true;
}

DisplayTrial::~DisplayTrial() {
  if (process_ < 0) return;
  kill(process_, SIGKILL);
  // The process ends at once unless the kernel itself is stuck in it, and then nobody waits for it.
  constexpr auto kPatienceWithTheKernel = std::chrono::milliseconds(250);
  const auto end = std::chrono::steady_clock::now() + kPatienceWithTheKernel;
  while (waitpid(process_, nullptr, WNOHANG) == 0 && std::chrono::steady_clock::now() < end)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

int DisplayTrial::outputIsReadable(sd_event_source* /*source*/, int descriptor, unsigned /*events*/,
                                   void* data) {
  auto& self = *static_cast<DisplayTrial*>(data);
  std::array<char, kLongestLine> piece{};
  const ssize_t count = read(descriptor, piece.data(), piece.size());
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return 0;
  if (count > 0) self.received_.append(piece.data(), static_cast<std::size_t>(count));
  const std::size_t end = self.received_.find('\n');
  if (end != std::string::npos) {
    self.finish(verdictOf(std::string_view(self.received_).substr(0, end)));
  } else if (count <= 0 || self.received_.size() > kLongestLine) {
    self.finish({});
  }
  return 0;
}

void DisplayTrial::finish(const Verdict& verdict) {
  source_.reset();
  patienceTimer_.reset();
  const auto done = std::exchange(done_, nullptr);
  if (done) done(verdict);
}

int DisplayTrial::runInOwnProcess() {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  // The outcome gets a descriptor of its own, because libraries may write to standard output too.
  const Descriptor output(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3));
  dup2(STDERR_FILENO, STDOUT_FILENO);
  // The desktop's session must not take the trial for another program that was started.
  for (const char* name : {"SESSION_MANAGER", "XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"})
    ::unsetenv(name);
  const platform::ModuleFunction function = platform::loadFromModule(kWindowsModule, kTryDisplay);
  if (!function.address) {
    // This process has no log, so the program logs the reason.
    writeLine(output.get(),
              std::string(function.isOfAnotherBuild ? kOfAnotherBuild : kNotLoadable) +
                  tidewell::cleaned(function.why, kLongestReason));
    return EXIT_FAILURE;
  }
  reinterpret_cast<TryDisplay>(function.address)([&output](const std::string& platform) {
    writeLine(output.get(), std::string(kUsable) + platform);
    waitForEndOfInput();
  });
  // The process skips its orderly end: the outcome is told already, and a display may hang there
  // too.
  std::_Exit(EXIT_SUCCESS);
}

}  // namespace staylit

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

// The line in which the process tells the outcome of its trial.
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

/// Starts `program` for a trial with `input` and `output` as its standard streams; -1 when it
/// cannot be started.
pid_t spawn(const std::string& program, int input, int output) {
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

void say(int output, const std::string& line) {
  const std::string text = line + "\n";
  if (write(output, text.data(), text.size()) < 0) std::_Exit(EXIT_FAILURE);
}

/// Waits until the program that started the trial needs it no more.
void waitForEnd() {
  char byte = 0;
  while (read(STDIN_FILENO, &byte, 1) > 0) {
  }
}

}  // namespace

DisplayTrial::DisplayTrial(platform::EventLoop& loop, std::function<void(const Verdict&)> done,
                           const std::string& program, tidewell::Seconds patience)
    : loop_(loop), done_(std::move(done)) {
  if (!start(program)) {
    limit_ = loop_.scheduleRepeating(tidewell::Seconds{0.001}, [this] { finish({}); });
    return;
  }
  limit_ = loop_.scheduleRepeating(patience, [this] { finish({Kind::silent, {}, {}}); });
}

bool DisplayTrial::start(const std::string& program) {
  Pipe input = makePipe();
  Pipe output = makePipe();
  if (!input.reading || !output.reading) return false;
  process_ = spawn(program, input.reading.get(), output.writing.get());
  if (process_ < 0) return false;
  input_ = std::move(input.writing);
  output_ = std::move(output.reading);
  fcntl(output_.get(), F_SETFL, O_NONBLOCK);
  sd_event_source* source = nullptr;
  if (sd_event_add_io(loop_.handle(), &source, output_.get(), EPOLLIN, readable, this) < 0) {
    return false;
  }
  source_ = platform::EventSource(source);
  return true;
}

DisplayTrial::~DisplayTrial() {
  if (process_ < 0) return;
  kill(process_, SIGKILL);
  // The process is gone at once, unless the kernel itself is stuck in it. Nobody waits for that.
  constexpr auto kPatienceWithTheKernel = std::chrono::milliseconds(250);
  const auto end = std::chrono::steady_clock::now() + kPatienceWithTheKernel;
  while (waitpid(process_, nullptr, WNOHANG) == 0 && std::chrono::steady_clock::now() < end)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

int DisplayTrial::readable(sd_event_source* /*source*/, int descriptor, unsigned /*events*/,
                           void* data) {
  auto& self = *static_cast<DisplayTrial*>(data);
  std::array<char, kLongestLine> piece{};
  const ssize_t count = read(descriptor, piece.data(), piece.size());
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return 0;
  if (count > 0) self.text_.append(piece.data(), static_cast<std::size_t>(count));
  const std::size_t end = self.text_.find('\n');
  if (end != std::string::npos) {
    self.finish(verdictOf(std::string_view(self.text_).substr(0, end)));
  } else if (count <= 0 || self.text_.size() > kLongestLine) {
    self.finish({});
  }
  return 0;
}

void DisplayTrial::finish(const Verdict& verdict) {
  source_.reset();
  limit_.reset();
  const auto done = std::exchange(done_, nullptr);
  if (done) done(verdict);
}

int DisplayTrial::answer() {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  // The outcome has a descriptor of its own, because libraries may write to standard output as
  // well.
  const Descriptor output(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3));
  dup2(STDERR_FILENO, STDOUT_FILENO);
  // The desktop's session should not learn of the trial as of a program of its own.
  for (const char* name : {"SESSION_MANAGER", "XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"})
    ::unsetenv(name);
  const platform::ModuleFunction function = platform::loadFromModule(kWindowsModule, kTryDisplay);
  if (!function.address) {
    // There is no log in this process.
    say(output.get(), std::string(function.isOfAnotherBuild ? kOfAnotherBuild : kNotLoadable) +
                          tidewell::cleaned(function.why, kLongestReason));
    return EXIT_FAILURE;
  }
  reinterpret_cast<TryDisplay>(function.address)([&output](const std::string& platform) {
    say(output.get(), std::string(kUsable) + platform);
    waitForEnd();
  });
  // The process does not end in order: the outcome is told already, and a display may hang at the
  // end as well.
  std::_Exit(EXIT_SUCCESS);
}

}  // namespace staylit

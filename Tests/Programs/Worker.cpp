// Works until it is killed:
//   worker cpu              one thread at full speed
//   worker disk FILE        writes a megabyte to FILE and to the disk, four times a second
//   worker net PORT         pulls bytes from a port of this machine
//   worker rest             does nothing
//   worker wake             works for a moment ten times a second
//   worker flap             works for four seconds, rests for four seconds, and so on
//   worker forks FOLDER N   starts N programs a second, each under a new name

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;

[[noreturn]] void burn() {
  for (volatile std::uint64_t count = 0;;)
    count = count + 1;
}

int writeToDisk(const char* file) {
  const std::vector<char> block(1 << 20, 'x');
  const int output = open(file, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  while (output >= 0) {
    if (pwrite(output, block.data(), block.size(), 0) < 0 || fdatasync(output) != 0) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
  }
  return 1;
}

int pull(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) return 1;
  std::vector<char> buffer(1 << 16);
  while (read(connection, buffer.data(), buffer.size()) > 0) {
  }
  return 0;
}

void burnFor(std::chrono::microseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  while (std::chrono::steady_clock::now() < end) {
  }
}

[[noreturn]] void flap() {
  for (int round = 0;; ++round) {
    // This is a quarter of a core, which is over the threshold.
    if (round / 4 % 2 == 0) burnFor(250ms);
    std::this_thread::sleep_for(round / 4 % 2 == 0 ? 750ms : 1000ms);
  }
}

int startNewNames(const std::string& own, const std::string& folder, int perSecond) {
  const auto begin = std::chrono::steady_clock::now();
  for (std::int64_t count = 0;; ++count) {
    const std::string name = folder + "/name-" + std::to_string(count);
    if (link(own.c_str(), name.c_str()) != 0) return 1;
    const pid_t pid = fork();
    if (pid == 0) {
      execl(name.c_str(), name.c_str(), "brief", nullptr);
      _exit(127);
    }
    while (waitpid(-1, nullptr, count % 50 == 0 ? 0 : WNOHANG) > 0) {
    }
    if (count >= 1000) unlink((folder + "/name-" + std::to_string(count - 1000)).c_str());
    std::this_thread::sleep_until(begin + std::chrono::microseconds(1'000'000 / perSecond) * count);
  }
}

}  // namespace

int main(int argc, char** argv) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const std::string_view kind = argc > 1 ? argv[1] : "";
  if (kind == "cpu") burn();
  if (kind == "disk" && argc > 2) return writeToDisk(argv[2]);
  if (kind == "flap") flap();
  while (kind == "rest")
    pause();
  while (kind == "wake") {
    burnFor(20us);
    std::this_thread::sleep_for(100ms);
  }
  if (kind == "brief") burnFor(1ms);
  if (kind == "forks" && argc > 3) return startNewNames(argv[0], argv[2], std::atoi(argv[3]));
  if (kind == "net" && argc > 2) return pull(std::atoi(argv[2]));
  return kind == "brief" ? 0 : 2;
}

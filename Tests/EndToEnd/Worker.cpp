// Works until it is killed:
//   worker cpu              one thread at full speed
//   worker disk FILE        writes a megabyte to FILE and to the disk, four times a second
//   worker net PORT         pulls bytes from a port of this machine

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <thread>
#include <vector>

namespace {

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

}  // namespace

int main(int argc, char** argv) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const std::string_view kind = argc > 1 ? argv[1] : "";
  if (kind == "cpu") burn();
  if (kind == "disk" && argc > 2) return writeToDisk(argv[2]);
  if (kind == "net" && argc > 2) return pull(std::atoi(argv[2]));
  return 2;
}

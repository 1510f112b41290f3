#include "Tests/Platform/Network/LoopbackChild.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>
#include <utility>
#include <vector>

namespace platform {

LoopbackChild::LoopbackChild(const LoopbackServer& server) {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    throw std::runtime_error("no socket pair");
  }
  orders_ = Descriptor(ends[0]);
  const Descriptor childEnd(ends[1]);
  pid_ = fork();
  if (pid_ == 0) {
    orders_.reset();
    obey(server, childEnd);
  }
}

LoopbackChild::~LoopbackChild() {
  end();
}

void LoopbackChild::end() {
  if (pid_ == 0) return;
  kill(pid_, SIGKILL);
  waitpid(std::exchange(pid_, 0), nullptr, 0);
}

void LoopbackChild::obey(const LoopbackServer& server, const Descriptor& orders) {
  std::vector<Descriptor> connections;
  Order order{};
  while (read(orders.get(), &order, sizeof order) == static_cast<ssize_t>(sizeof order)) {
    bool done = order.action == Action::connect || !connections.empty();
    if (done) {
      switch (order.action) {
        case Action::connect:
          connections.push_back(server.connect());
          done = static_cast<bool>(connections.back());
          break;
        case Action::receive:
          done = receiveBytes(connections.back(), order.count);
          break;
        case Action::send:
          done = platform::sendBytes(connections.back(), order.count);
          break;
        case Action::close:
          connections.pop_back();
          break;
      }
    }
    if (write(orders.get(), &done, sizeof done) < 0) break;
  }
  _exit(0);
}

void LoopbackChild::send(const Order& order) const {
  if (write(orders_.get(), &order, sizeof order) < 0) throw std::runtime_error("the child is gone");
}

bool LoopbackChild::receiveResult() const {
  bool done = false;
  return read(orders_.get(), &done, sizeof done) == static_cast<ssize_t>(sizeof done) && done;
}

bool LoopbackChild::order(const Order& order) {
  send(order);
  return receiveResult();
}

}  // namespace platform

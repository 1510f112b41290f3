#pragma once

#include <sys/types.h>

#include <cstdint>

#include "Platform/Posix/Files/Descriptor.h"
#include "Tests/Platform/Network/LoopbackServer.h"

namespace platform {

/// A child process that talks to the test's server, step by step. Each order waits until the child
/// has carried it out, and returns false when it could not. The child ends with this object.
class LoopbackChild {
 public:
  explicit LoopbackChild(const LoopbackServer& server);
  ~LoopbackChild();
  LoopbackChild(const LoopbackChild&) = delete;
  LoopbackChild& operator=(const LoopbackChild&) = delete;

  [[nodiscard]] pid_t pid() const { return pid_; }

  /// Opens another connection. The next orders use it.
  bool connect() { return order({Action::connect, 0}); }
  /// Reads exactly so many bytes. `begin` sends the order and `finish` waits for its end. In
  /// between, the test sends the bytes.
  void beginReceive(std::uint64_t count) { send({Action::receive, count}); }
  bool finishReceive() { return receiveResult(); }
  bool sendBytes(std::uint64_t count) { return order({Action::send, count}); }
  /// Closes the connection that was opened last.
  bool close() { return order({Action::close, 0}); }
  /// Ends the child and reaps it.
  void end();

 private:
  enum class Action : char { connect, receive, send, close };
  struct Order {
    Action action;
    std::uint64_t count;
  };
  [[noreturn]] static void obey(const LoopbackServer& server, const Descriptor& orders);
  void send(const Order& order) const;
  [[nodiscard]] bool receiveResult() const;
  bool order(const Order& order);

  Descriptor orders_;
  pid_t pid_ = 0;
};

}  // namespace platform

#include "Platform/Posix/Files/WholeWrite.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <string>
#include <thread>

#include "Platform/Posix/Files/Pipe.h"

namespace platform {
namespace {

constexpr std::size_t kMoreThanAPipeHolds = 1U << 21U;

/// A signal whose handler does nothing, for as long as this lives: it ends a system call early.
class Interruption {
 public:
  Interruption() {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, &former_);
  }
  ~Interruption() { sigaction(SIGUSR1, &former_, nullptr); }
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  void interrupt() const { pthread_kill(thread_, SIGUSR1); }

 private:
  struct sigaction former_ {};
  pthread_t thread_ = pthread_self();
};

std::string readToItsEnd(int file, const Interruption& writer) {
  // While nobody reads, a call ends without having written anything.
  for (int time = 0; time < 50; ++time) {
    writer.interrupt();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  std::string content;
  std::array<char, 4096> piece{};
  for (ssize_t got = 0; (got = ::read(file, piece.data(), piece.size())) > 0;) {
    content.append(piece.data(), static_cast<std::size_t>(got));
    writer.interrupt();
  }
  return content;
}

TEST(WholeWrite, GoesOnAfterEachSignal) {
  Pipe pipe = Pipe::make();
  ASSERT_TRUE(pipe);
  const std::string content = std::string(kMoreThanAPipeHolds, 'a') + "end";
  const Interruption writer;
  std::string read;
  std::thread reader([&] { read = readToItsEnd(pipe.reading.get(), writer); });
  EXPECT_TRUE(writeWhole(pipe.writing.get(), content));
  pipe.writing.reset();
  reader.join();
  EXPECT_EQ(read, content);
}

TEST(WholeWrite, SaysWhyTheRestCouldNotBeWritten) {
  // The system takes as much as the pipe has room for, and then refuses.
  const Pipe pipe = Pipe::make();
  ASSERT_TRUE(pipe);
  ASSERT_EQ(fcntl(pipe.writing.get(), F_SETFL, O_NONBLOCK), 0);
  EXPECT_FALSE(writeWhole(pipe.writing.get(), std::string(kMoreThanAPipeHolds, 'a')));
  EXPECT_EQ(errno, EAGAIN);
}

TEST(WholeWrite, OfNothingIsDoneEvenWithoutAFile) {
  EXPECT_TRUE(writeWhole(-1, ""));
  EXPECT_FALSE(writeWhole(-1, "a"));
  EXPECT_EQ(errno, EBADF);
}

}  // namespace
}  // namespace platform

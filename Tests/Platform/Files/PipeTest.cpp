#include "Platform/Posix/Files/Pipe.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <optional>
#include <utility>

#include "Tests/Platform/Support/ClosedStandardStreams.h"

namespace platform {
namespace {

TEST(Pipe, CarriesWhatIsWrittenToItsReadingEnd) {
  const Pipe pipe = Pipe::make();
  ASSERT_TRUE(pipe);
  ASSERT_EQ(write(pipe.writing.get(), "x", 1), 1);
  char read = 0;
  EXPECT_EQ(::read(pipe.reading.get(), &read, 1), 1);
  EXPECT_EQ(read, 'x');
}

TEST(Pipe, IsInheritedByNoProgram) {
  const Pipe pipe = Pipe::make();
  EXPECT_EQ(fcntl(pipe.reading.get(), F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(fcntl(pipe.writing.get(), F_GETFD), FD_CLOEXEC);
}

TEST(Pipe, HasNoNumberOfAStandardStream) {
  // The pipe is closed before the streams are back. If it had the number of a stream, it would
  // close that stream.
  std::optional<testing::ClosedStandardStreams> closed(std::in_place);
  std::optional<Pipe> pipe(Pipe::make());
  const int reading = pipe->reading.get();
  const int writing = pipe->writing.get();
  const bool isInherited =
      fcntl(reading, F_GETFD) != FD_CLOEXEC || fcntl(writing, F_GETFD) != FD_CLOEXEC;
  const bool leavesThemFree = fcntl(STDIN_FILENO, F_GETFD) < 0 &&
                              fcntl(STDOUT_FILENO, F_GETFD) < 0 &&
                              fcntl(STDERR_FILENO, F_GETFD) < 0;
  pipe.reset();
  closed.reset();
  EXPECT_GT(reading, STDERR_FILENO);
  EXPECT_GT(writing, STDERR_FILENO);
  EXPECT_FALSE(isInherited);
  EXPECT_TRUE(leavesThemFree);
}

}  // namespace
}  // namespace platform

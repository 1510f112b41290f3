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

TEST(Pipe, TakesNoNumberOfAStandardStream) {
  std::optional<testing::ClosedStandardStreams> closed(std::in_place);
  const Pipe pipe = Pipe::make();
  const int readingFlags = fcntl(pipe.reading.get(), F_GETFD);
  const int writingFlags = fcntl(pipe.writing.get(), F_GETFD);
  const bool leavesThemFree = fcntl(STDIN_FILENO, F_GETFD) < 0 &&
                              fcntl(STDOUT_FILENO, F_GETFD) < 0 &&
                              fcntl(STDERR_FILENO, F_GETFD) < 0;
  closed.reset();
  EXPECT_GT(pipe.reading.get(), STDERR_FILENO);
  EXPECT_GT(pipe.writing.get(), STDERR_FILENO);
  EXPECT_EQ(readingFlags, FD_CLOEXEC);
  EXPECT_EQ(writingFlags, FD_CLOEXEC);
  EXPECT_TRUE(leavesThemFree);
}

}  // namespace
}  // namespace platform

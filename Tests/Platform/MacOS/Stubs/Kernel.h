#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace platform::stub {

/// A process as the kernel of a Mac tells of it. Times are in the units of `Kernel::numer` and
/// `Kernel::denom`.
struct Process {
  std::int32_t pid = 0;
  std::int32_t parent = 0;
  uid_t user = 0;
  bool waitsToBeReaped = false;
  bool ignoresEndOfChildren = false;
  std::string path{};
  std::uint64_t userTime = 0, systemTime = 0;
  std::uint64_t childUserTime = 0, childSystemTime = 0;
  std::uint64_t diskBytesRead = 0, diskBytesWritten = 0;
  std::uint64_t startTime = 0;
};

/// What libproc's stubs answer from: processes that the test sets, or those of this machine.
///
/// Has the habits of that kernel: whoever asks for room is offered more than is needed; a process
/// that waits to be reaped is listed with its usage, has no path, and its record is found only by
/// who asks for such; usage is told of one's own processes alone, and to root.
class Kernel {
 public:
  static Kernel& shared();

  /// As at the beginning of a test: the processes of this machine.
  void reset() { *this = Kernel(); }

  [[nodiscard]] std::vector<Process> list() const;
  [[nodiscard]] std::optional<Process> find(std::int32_t pid) const;

  /// Absent: those of this machine, as its /proc tells.
  std::optional<std::vector<Process>> processes;
  std::function<void()> afterOfferingRoom;  ///< What happens before the list is asked for.
  bool listsNothing = false;                ///< Though it has offered room.
  bool offersNoRoom = false;
  std::uint32_t numer = 125;
  std::uint32_t denom = 3;
};

}  // namespace platform::stub

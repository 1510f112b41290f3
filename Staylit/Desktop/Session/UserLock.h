#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include "Platform/Posix/Files/Descriptor.h"

namespace staylit {

/// The lock of which a user has one, so that one Staylit runs for each user, also where one start
/// has a session bus and another has none. It is a file in the user's runtime folder.
///
/// The kernel gives the lock back when the process ends, however it ends. Not for use on several
/// threads at once.
class UserLock {
 public:
  enum class Outcome {
    taken,
    held,      ///< By another process.
    noFolder,  ///< There is no runtime folder, it is not this user's alone, or it takes no locks.
  };

  /// The folder is that of the environment, else the one that the system makes for a user.
  UserLock();
  explicit UserLock(std::filesystem::path folder) : folder_(std::move(folder)) {}

  /// Does not wait. Taking a lock again that this object has keeps it.
  Outcome take();

  /// The process that has the lock, as it wrote itself; 0 when it has not written it yet. Absent
  /// when no process has the lock.
  [[nodiscard]] std::optional<pid_t> holder() const;
  /// Whether there is a folder in which a lock can be: without one, `holder` knows nothing.
  [[nodiscard]] bool hasFolder() const;

 private:
  [[nodiscard]] platform::Descriptor openFolder() const;

  std::filesystem::path folder_;
  platform::Descriptor file_;  ///< Set while the lock is taken.
};

/// For people: why the process that has the lock cannot be asked, and what helps. `hasBus` says
/// whether there is a session bus, on which it then is not.
[[nodiscard]] std::string outOfReach(pid_t holder, bool hasBus);

}  // namespace staylit

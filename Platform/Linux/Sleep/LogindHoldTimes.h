#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Linux/Sleep/ListedInhibitor.h"
#include "Tidewell/Ports/Clock.h"

namespace platform {

/// What logind writes down of one of its locks. A value.
struct LogindHoldFile {
  std::string what;
  std::string who;
  std::string why;
  std::uint32_t user = 0;
  std::uint32_t process = 0;
};

/// Parses such a file. Texts are as logind was told them, any bytes. Absent when a line that must
/// be there is missing or is no number.
std::optional<LogindHoldFile> parseLogindHoldFile(std::string_view text);

/// Since when logind's locks are held, which logind itself does not tell: by the pipes that it made
/// with them, which stay when it restarts.
///
/// The files beside the pipes say which lock each belongs to. Their form is logind's own matter, so
/// that a lock whose file does not fit to the letter has no time. Main thread only.
class LogindHoldTimes {
 public:
  explicit LogindHoldTimes(const std::filesystem::path& folder = "/run/systemd/inhibit");

  /// Gives each time out once, so that equal locks have different ones; the oldest first.
  std::optional<tidewell::WallTime> take(const ListedInhibitor& inhibitor);

 private:
  struct Held {
    LogindHoldFile file;
    tidewell::WallTime since;
  };

  std::vector<Held> held_;
};

}  // namespace platform

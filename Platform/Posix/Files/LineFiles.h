#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Posix/ErrorDescription.h"
#include "Platform/Posix/Files/Descriptor.h"
#include "Tidewell/Ports/Clock.h"

namespace platform {

/// A folder of files to which lines are appended, by several processes at once if need be.
///
/// A line is one write, so that lines of two processes never mix, and a process that is killed
/// leaves at most its last line torn. The next line begins on a line of its own. The files are
/// readable by the user alone; a folder that belongs to another user, or that others may write to,
/// is refused, and no symbolic link is followed in place of the folder or a file.
///
/// The program does not ask the disk to write at once: when the machine loses its power, the lines
/// of the last seconds may be lost.
///
/// A file is full when it has a certain size or was begun long ago; then another is begun, and the
/// oldest go. One thread at a time; a slow disk makes every call slow. While this object exists and
/// has appended, others can tell that the folder is in use.
class LineFiles {
 public:
  struct Limits {
    std::size_t fileBytes = std::size_t{256} << 10;
    std::size_t files = 16;
    std::chrono::days fileAge{6};  ///< Then another file is begun.
    std::chrono::days age{90};     ///< Files that were begun before that go.
  };
  using Now = std::chrono::sys_seconds (*)();

  /// An empty `folder` is an error at each use. `describe` makes the texts of failures.
  LineFiles(std::filesystem::path folder, ErrorDescription describe);
  LineFiles(std::filesystem::path folder, ErrorDescription describe, Limits limits, Now now);

  [[nodiscard]] const std::filesystem::path& folder() const { return path_; }

  /// Makes the folder if it is missing. Returns why it failed, for people; absent on success. After
  /// a failure the file may have a part of the line, which nobody reads as a line.
  std::optional<std::string> append(std::string_view line);

  /// Sets the time of the newest file to now. Does nothing before the first `append`.
  void refresh();

  /// Closes what is open. A later use opens it again.
  void close();

  /// When the newest file was written or refreshed; absent when there is none.
  std::optional<tidewell::WallTime> lastWritten();

  struct Content {
    std::string text;  ///< Of all files, the oldest first.
    std::optional<tidewell::WallTime> lastWritten;
    bool isInUse = false;  ///< Whether a process that has appended still runs.
    std::string error;     ///< Why nothing could be read, for people; empty where nothing is there.
  };
  /// Reads all and changes nothing.
  [[nodiscard]] static Content read(const std::filesystem::path& folder, ErrorDescription describe);

 private:
  struct File {
    unsigned long number = 0;
    std::chrono::sys_days begun;
    std::string name;
  };
  using Files = std::vector<File>;

  static std::optional<File> fileNamed(std::string_view name);
  static Files list(int folder);
  static std::optional<tidewell::WallTime> writtenAt(int folder, const Files& files);

  std::optional<std::string> prepare(std::size_t bytes);
  std::optional<std::string> prepareFolder();
  std::optional<std::string> openFile(std::size_t bytes);
  std::optional<std::string> beginFile(const Files& files);
  std::optional<std::string> open(const File& file, int flags);
  void removeOldFiles(Files files) const;
  [[nodiscard]] bool hasRoom(std::size_t bytes) const;
  [[nodiscard]] std::string failure(int errorNumber) const;

  std::filesystem::path path_;
  ErrorDescription describe_;
  Limits limits_;
  Now now_;
  Descriptor folder_;
  bool isLocked_ = false;
  Descriptor file_;
  std::chrono::sys_days begun_;  ///< When the open file was.
};

}  // namespace platform

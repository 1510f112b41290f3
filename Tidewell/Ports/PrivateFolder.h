#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tidewell {

/// A new file that only its user may read, and that grows at its end. Its destructor closes it.
class PrivateFile {
 public:
  virtual ~PrivateFile() = default;

  /// Returns why not all of `bytes` was written, for people to read; empty on success. After a
  /// failure a part of `bytes` may be there. Fails when somebody has removed the file.
  virtual std::string append(std::string_view bytes) = 0;
};

/// A folder in which the program makes files that only their user may read. One thread at a time;
/// each call blocks until it is done.
class PrivateFolder {
 public:
  struct Entry {
    std::string name;
    std::uint64_t size = 0;
    std::int64_t ageSeconds = 0;  ///< Since the last change.
  };
  /// One of the two is set: the file, or why it could not be made, for people to read.
  struct Creation {
    std::unique_ptr<PrivateFile> file;
    std::string error;
  };

  virtual ~PrivateFolder() = default;

  /// The plain files in the folder, by name; none where the folder does not exist.
  virtual std::vector<Entry> list() = 0;
  /// Makes a file, and the folder too if it is missing and the program's own. A file of this name
  /// must not exist.
  virtual Creation create(const std::string& name) = 0;
  virtual void remove(const std::string& name) = 0;
};

}  // namespace tidewell

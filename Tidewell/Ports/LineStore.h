#pragma once

#include <functional>
#include <optional>
#include <string>

#include "Tidewell/Ports/Clock.h"

namespace tidewell {

/// Lines of text that stay after the program has ended, however it ends. The oldest lines go when
/// there are too many, or when they are too old.
///
/// Main thread only. Only `finishWriting` waits. A line that cannot be written is written
/// with a later one, if that is not too far away. The log says that lines cannot be written, once
/// until they can again.
class LineStore {
 public:
  /// Makes a line, which must have no line feed, on another thread. `lastWritten` is when the store
  /// was written or refreshed last before this, by this program or another; absent when it is
  /// empty.
  using Line = std::function<std::string(std::optional<WallTime> lastWritten)>;

  virtual ~LineStore() = default;

  /// The lines have the order of the calls.
  virtual void append(Line line) = 0;

  /// Makes the store one that was written just now, without a line. Does nothing where it is empty.
  virtual void refresh() = 0;

  /// Call it before the program ends. Waits, for some seconds at most, until all is written.
  virtual void finishWriting() = 0;
};

}  // namespace tidewell

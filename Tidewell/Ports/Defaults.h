#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Tidewell/Ports/PropertyValue.h"

namespace tidewell {

/// The user's settings: a persistent store of typed values by key. Main thread only.
///
/// A key that the user has not set answers with its registered default; registered defaults are
/// never written. A value of another type is converted as far as it goes (a number written as
/// text, a number read as a truth value); what cannot be converted reads as 0, 0.0, false or
/// absent. A value that is set counts at once and reaches the disk a moment later; no call but
/// `finishWriting` waits for the disk. What cannot be written is logged and holds for this process.
class Defaults {
 public:
  virtual ~Defaults() = default;

  /// Adds to the registered defaults, replacing those of the same key.
  virtual void registerDefaults(const PropertyDictionary& defaults) = 0;

  virtual std::int64_t integer(std::string_view key) = 0;
  virtual double real(std::string_view key) = 0;
  virtual bool boolean(std::string_view key) = 0;
  /// Absent when the value is not a list of texts.
  virtual std::optional<std::vector<std::string>> stringList(std::string_view key) = 0;

  virtual void setInteger(std::string_view key, std::int64_t value) = 0;
  virtual void setReal(std::string_view key, double value) = 0;
  virtual void setBoolean(std::string_view key, bool value) = 0;
  virtual void setStringList(std::string_view key, const std::vector<std::string>& value) = 0;

  /// To be called before the program ends: waits until everything that was set is on the disk, some
  /// seconds at most. What is not there by then is logged and lost.
  virtual void finishWriting() = 0;
};

}  // namespace tidewell

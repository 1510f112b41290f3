#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Tidewell/Ports/PropertyValue.h"

namespace tidewell {

/// What a value that somebody wrote for a setting amounts to, for people.
struct SettingMeaning {
  std::string counts;  ///< The value that counts instead: "30", "false", "an empty list".
  /// What the setting wants, and what follows from this value; both are empty where the value is
  /// within the setting's limits, and the second may be empty.
  std::string wants;
  std::string consequence;
};

/// Tells what a value means for the setting of that key.
using SettingMeanings = std::function<SettingMeaning(std::string_view key, const PropertyValue&)>;

/// The user's settings: a persistent store of typed values by key. Main thread only.
///
/// A key that the user has not set reads as its registered default; registered defaults are never
/// written. A value of another type is converted where that is possible (a number that is written
/// as text, a number that is read as a truth value). A value that cannot be converted reads as 0,
/// 0.0, false or absent. A value that is set counts at once and reaches the disk a moment later.
/// Only `finishWriting` waits for the disk. A value that cannot be written is logged, and counts
/// until this process ends.
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

  /// What is wrong with the settings as people wrote them, a line of text for each: what does not
  /// count as it stands, and what counts instead. Hands over each once, as long as it stands so.
  virtual std::vector<std::string> takeRemarks(const SettingMeanings& /*meanings*/) { return {}; }

  /// Why what was set last could not be written, for people; empty while nothing is wrong.
  virtual std::string savingProblem() { return {}; }

  /// Call it before the program ends. Waits, for some seconds at most, until everything that was
  /// set is on the disk, or with a process of the system that writes it after this program's end.
  /// Other values are lost, and the log says so.
  virtual void finishWriting() = 0;
};

}  // namespace tidewell

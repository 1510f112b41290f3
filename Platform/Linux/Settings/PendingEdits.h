#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// Settings that were set and are not in the file yet. Each one hides the file's value until it is
/// saved. If somebody gives the key another value in the file before that, the file's value is the
/// later one and counts. A plain value; one thread at a time.
class PendingEdits {
 public:
  [[nodiscard]] bool isEmpty() const { return edits_.empty(); }

  /// Absent when nothing is pending for `key`.
  [[nodiscard]] const tidewell::PropertyValue* find(std::string_view key) const;

  /// `file` has the last known values of the file; it is null when the file could never be read. A
  /// value that the file has already is not pending.
  void set(std::string_view key, tidewell::PropertyValue value,
           const tidewell::PropertyDictionary* file);

  /// What it means when the file lacks a key: that somebody removed the key, or nothing, because
  /// the file is not whole.
  enum class Absence { counts, meansNothing };

  /// Drops each edit whose key got another value in the file after the edit was made.
  void follow(const tidewell::PropertyDictionary& file, Absence absence = Absence::counts);

  /// Drops the edits that were saved: `taken` is an earlier copy of these edits, and `file` has the
  /// values after saving. What was set after the copy was taken stays pending.
  void settle(const PendingEdits& taken, const tidewell::PropertyDictionary& file,
              Absence absence = Absence::counts);

  [[nodiscard]] tidewell::PropertyDictionary values() const;

 private:
  struct Edit {
    tidewell::PropertyValue value;
    bool knowsFile = false;  ///< Whether the file's value is known.
    /// The file's value when the edit was made, or when the file was first read; absent when the
    /// file had none.
    std::optional<tidewell::PropertyValue> before;
    unsigned long number = 0;  ///< Tells one edit of a key from the next one.
  };
  using Edits = std::map<std::string, Edit, std::less<>>;

  Edits edits_;
  unsigned long last_ = 0;
};

}  // namespace platform

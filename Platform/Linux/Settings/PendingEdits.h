#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// Settings that were set and are not in the file yet. Each hides the file's value until it is
/// saved, or until somebody else gives its key another value in the file: that value is later, and
/// so it counts. A plain value; one thread at a time.
class PendingEdits {
 public:
  [[nodiscard]] bool isEmpty() const { return edits_.empty(); }

  /// Absent when nothing is pending for `key`.
  [[nodiscard]] const tidewell::PropertyValue* find(std::string_view key) const;

  /// `file` holds the file's values as far as they are known; null when it could never be read. A
  /// value that the file has already is not pending.
  void set(std::string_view key, tidewell::PropertyValue value,
           const tidewell::PropertyDictionary* file);

  /// What a missing key means: that somebody removed it, or nothing, because the file is not whole.
  enum class Absence { counts, meansNothing };

  /// Drops the edits whose keys have other values in the file now.
  void follow(const tidewell::PropertyDictionary& file, Absence absence = Absence::counts);

  /// A copy of these edits, which was `taken` a while ago, has been saved in `file`. What was set
  /// since then stays pending.
  void settle(const PendingEdits& taken, const tidewell::PropertyDictionary& file,
              Absence absence = Absence::counts);

  [[nodiscard]] tidewell::PropertyDictionary values() const;

 private:
  struct Edit {
    tidewell::PropertyValue value;
    bool knowsFile = false;  ///< Whether the file could be read before.
    /// The file's value then; absent when it had none.
    std::optional<tidewell::PropertyValue> before;
    unsigned long number = 0;  ///< Tells one edit of a key from the next one.
  };
  using Edits = std::map<std::string, Edit, std::less<>>;

  Edits edits_;
  unsigned long last_ = 0;
};

}  // namespace platform

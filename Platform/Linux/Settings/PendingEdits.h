#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// Settings that were set and do not stand in the file yet. They hide what the file says, until
/// they are saved, or until somebody else gives the key another value in the file: that is later
/// than the setting, and counts. A plain value; one thread at a time.
class PendingEdits {
 public:
  [[nodiscard]] bool isEmpty() const { return edits_.empty(); }

  /// Absent when nothing is pending for `key`.
  [[nodiscard]] const tidewell::PropertyValue* find(std::string_view key) const;

  /// `file` has the file's values as far as they are known; null when it never could be read. What
  /// the file says already is not pending.
  void set(std::string_view key, tidewell::PropertyValue value,
           const tidewell::PropertyDictionary* file);

  /// What it means that a file says nothing of a key: that somebody removed it, or nothing, since
  /// the file is not whole.
  enum class Absence { counts, meansNothing };

  /// Drops the edits whose keys have got other values in the file.
  void follow(const tidewell::PropertyDictionary& file, Absence absence = Absence::counts);

  /// To be called when a copy of these edits, `taken` a while ago, has been saved in `file`. What
  /// was set since then stays.
  void settle(const PendingEdits& taken, const tidewell::PropertyDictionary& file,
              Absence absence = Absence::counts);

  [[nodiscard]] tidewell::PropertyDictionary values() const;

 private:
  struct Edit {
    tidewell::PropertyValue value;
    bool knowsFile = false;                         ///< Whether the file could be read before.
    std::optional<tidewell::PropertyValue> before;  ///< What it said then; absent for nothing.
    unsigned long number = 0;                       ///< Tells one edit of a key from the next.
  };
  using Edits = std::map<std::string, Edit, std::less<>>;

  Edits edits_;
  unsigned long last_ = 0;
};

}  // namespace platform

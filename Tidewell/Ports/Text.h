#pragma once

#include <compare>
#include <cstddef>
#include <string>
#include <string_view>

namespace tidewell {

/// The work that needs the platform's Unicode tables. All text is UTF-8; a broken sequence counts
/// as U+FFFD. Safe from any thread.
class Text {
 public:
  virtual ~Text() = default;

  /// Full Unicode lower-casing, independent of the user's language.
  virtual std::string lowercased(std::string_view text) = 0;

  /// Case-insensitive order for people, by the rules of the user's language.
  virtual std::weak_ordering localizedCaseInsensitiveCompare(std::string_view left,
                                                             std::string_view right) = 0;

  /// `text` cut, or filled with blanks, to exactly `length` characters as a reader counts them.
  virtual std::string padded(std::string_view text, std::size_t length) = 0;
};

}  // namespace tidewell

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// What a desktop file says of an application, as far as this program needs it. A plain value that
/// is made from text alone.
struct DesktopEntry {
  std::string type;     ///< "Application", "Link", "Directory".
  std::string name;     ///< In the user's language, safe to show; empty when there is none.
  std::string exec;     ///< The command line; `execWords` splits it.
  std::string tryExec;  ///< A program that must be there for the entry to count.
  bool terminal = false;
  bool noDisplay = false;
  /// Whether the entry counts as deleted. It then hides entries with the same id in less important
  /// folders.
  bool hidden = false;

  bool operator==(const DesktopEntry&) const = default;

  /// Absent for a text without a "[Desktop Entry]" group. `localeVariants` are the wanted
  /// languages, the best first.
  static std::optional<DesktopEntry> parse(std::string_view text,
                                           const std::vector<std::string>& localeVariants);

  /// The languages for a user of `locale`, the best first: for "de_AT.UTF-8@euro" they are
  /// de_AT@euro, de_AT, de@euro and de. There are none when `locale` names no language.
  static std::vector<std::string> localeVariants(std::string_view locale);
};

}  // namespace platform

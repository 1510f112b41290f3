#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Tidewell/AppCategory.h"
#include "Tidewell/Ports/Text.h"
#include "Tidewell/TextMap.h"

namespace tidewell {

/// One known application or family of command-line tools. Immutable.
struct CatalogEntry {
  CatalogEntry(std::string displayName, AppCategory appCategory, std::vector<std::string> bundles,
               std::vector<std::string> programs, std::optional<double> floor);

  std::string display;  ///< The name shown to the user.
  AppCategory category;
  std::vector<std::string> bundleIDs;    ///< Bundle identifiers that belong to it; may be empty.
  std::vector<std::string> executables;  ///< Executable names that belong to it; may be empty.
  /// Percent of one core that replaces the user's CPU threshold for this application.
  std::optional<double> cpuFloor;

  /// `bundleIDs`, then `executables`.
  [[nodiscard]] std::vector<std::string> identifiers() const;
};

/// The built-in table of applications that typically do long-running work.
///
/// It names and classifies; it does not decide who is watched. Built on first use, never changed
/// afterwards, safe from any thread. Matching ignores case.
class AppCatalog {
 public:
  using Index = TextMap<const CatalogEntry*>;

  AppCatalog() = delete;

  /// All entries, in the order of the table.
  static const std::vector<CatalogEntry>& entries();

  /// The entry that `bundleID` belongs to, else the one that `executable` belongs to, else null.
  /// A caller that holds only an application key passes it as both. The pointer stays valid.
  static const CatalogEntry* lookup(std::optional<std::string_view> bundleID,
                                    std::string_view executable);

  /// As above, with the platform's `text` given rather than taken from the installed ports.
  static const CatalogEntry* lookup(std::optional<std::string_view> bundleID,
                                    std::string_view executable, Text& text);

 private:
  /// Keyed by lower-cased bundle identifier and lower-cased executable name.
  static const Index& byBundle();
  static const Index& byExecutable();
};

}  // namespace tidewell

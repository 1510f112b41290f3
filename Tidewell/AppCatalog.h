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
  /// A CPU threshold, in percent of one core, that replaces the user's for this application.
  std::optional<double> cpuFloor;

  /// `bundleIDs`, then `executables`.
  [[nodiscard]] std::vector<std::string> identifiers() const;
};

/// The built-in table of applications that typically do long-running work.
///
/// The table names and classifies applications; it does not decide which of them are watched. It is
/// built on first use and never changes afterwards, so any thread may use it. Matching ignores
/// case.
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

  /// The same with the given `text` instead of that of the installed ports.
  static const CatalogEntry* lookup(std::optional<std::string_view> bundleID,
                                    std::string_view executable, Text& text);

 private:
  /// The keys are lower-cased: bundle identifiers in the first, executable names in the second.
  static const Index& byBundle();
  static const Index& byExecutable();
};

}  // namespace tidewell

#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "Platform/Linux/Applications/DesktopEntry.h"
#include "Platform/Linux/Applications/DesktopFolders.h"
#include "Tidewell/TextMap.h"

namespace platform {

/// An application that is installed.
struct DesktopApplication {
  std::string id;             ///< Of its desktop file, as in "org.gnome.Nautilus".
  std::string localizedName;  ///< In the user's language; not empty.

  bool operator==(const DesktopApplication&) const = default;
};

/// The installed applications, from their desktop files. Main thread only; nothing here fails,
/// what cannot be read does not exist.
///
/// Everything is read when it is first asked for and then kept until `refresh` finds a change.
class DesktopFiles {
 public:
  /// Where to look, the most important first, and for whom.
  struct Places {
    std::vector<std::filesystem::path> applicationFolders;
    std::vector<std::filesystem::path>
        programFolders;  ///< Where a bare program name is looked for.
    std::string locale;  ///< As the environment names it.
  };

  /// Those of the user's environment. Flatpak's and snap's folders are there even when the
  /// environment of a service lacks them.
  static Places environmentPlaces();

  explicit DesktopFiles(Places places = environmentPlaces());

  /// The application whose desktop file has `id`. None for an entry that is hidden, has no name,
  /// or is no application.
  std::optional<DesktopApplication> find(std::string_view id);

  /// The application that the program at `path`, as the kernel gives it, belongs to: the one that
  /// names it in `Exec` or `TryExec`. Of several, one that is shown in menus goes before one that
  /// is not, and a plain start before one with options. None for what runs in a terminal, and for
  /// interpreters and starters, which may run anything.
  std::optional<DesktopApplication> findByProgram(std::string_view path);

  /// Forgets what was read if an application has come or gone since.
  void refresh();

 private:
  /// How well an entry stands for its program: the smallest is the best.
  using Rank = std::tuple<bool, std::size_t, std::string>;
  struct Claim {
    Rank rank;
    DesktopApplication application;
  };

  void scanOnce();
  std::optional<DesktopEntry> read(const std::filesystem::path& file) const;
  void buildProgramIndex();
  void claim(const std::string& program, const Rank& rank, const DesktopApplication& application);
  std::optional<std::filesystem::path> locate(const std::string& program) const;

  Places places_;
  std::vector<std::string> localeVariants_;
  DesktopFolders folders_;
  bool isScanned_ = false;
  tidewell::TextMap<std::optional<DesktopApplication>> found_;  ///< Answers of `find`.
  std::optional<tidewell::TextMap<Claim>> programs_;            ///< By path, once asked for.
};

}  // namespace platform

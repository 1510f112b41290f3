#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "Platform/Linux/Applications/ApplicationPlaces.h"
#include "Platform/Linux/Applications/DesktopEntry.h"
#include "Platform/Linux/Applications/DesktopFolders.h"
#include "Tidewell/TextMap.h"

namespace platform {

/// An installed application.
struct DesktopApplication {
  std::string id;             ///< The id of its desktop file, such as "org.gnome.Nautilus".
  std::string localizedName;  ///< In the user's language; not empty.

  bool operator==(const DesktopApplication&) const = default;
};

/// The installed applications, read from their desktop files. Main thread only. Nothing here fails:
/// a file that cannot be read does not exist.
///
/// The first question reads all files. The result is kept until `refresh` finds a change.
class DesktopFiles {
 public:
  explicit DesktopFiles(ApplicationPlaces places = ApplicationPlaces::ofEnvironment());

  /// The application whose desktop file has the id `id`. Absent when the entry is hidden, has no
  /// name, or is no application.
  std::optional<DesktopApplication> find(std::string_view id);

  /// The application that names the program at `path` in `Exec` or `TryExec`. `path` is the one
  /// that the kernel tells. Among several applications, one that menus show goes before one that
  /// they do not show, and a command with fewer fixed words goes before one with more. Absent for
  /// applications that run in a terminal, and for interpreters and starters, which may run
  /// anything.
  std::optional<DesktopApplication> findByProgram(std::string_view path);

  /// Forgets everything that was read if an application was installed or removed since.
  void refresh();

 private:
  /// How well an entry fits its program. The smallest rank fits best.
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

  ApplicationPlaces places_;
  std::vector<std::string> localeVariants_;
  DesktopFolders folders_;
  bool isScanned_ = false;
  tidewell::TextMap<std::optional<DesktopApplication>> found_;  ///< Answers of `find`.
  std::optional<tidewell::TextMap<Claim>> programs_;  ///< By path; absent until somebody asks.
};

}  // namespace platform

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// The unit of the service manager to which a process belongs. The unit's name may tell the
/// application. A plain value that is made from text alone.
///
/// Desktops start every application in a unit of its own and name the unit after it:
/// `app-[launcher-]<id>-<random>.scope`, `app-[launcher-]<id>[@instance].service`,
/// `app-flatpak-<id>-<n>.scope`, `snap.<snap>.<app>-<uuid>.scope` (or with a dot before the uuid),
/// `dbus-:<n>-<id>@<n>.service`.
class UnitName {
 public:
  /// The name for a process without a unit.
  UnitName() = default;

  /// The innermost unit in the unified hierarchy's line of `/proc/<pid>/cgroup`. A group below a
  /// unit belongs to the unit; a slice is no unit.
  static UnitName fromControlGroup(std::string_view file);

  /// Such as "app-gnome-firefox-4711.scope". Empty for no unit.
  [[nodiscard]] std::string_view name() const;

  /// The control group of the unit. It tells apart two units of the same name.
  [[nodiscard]] const std::string& path() const { return path_; }

  /// The desktop ids that the name may mean, the likeliest first. There are none when the unit is
  /// not one of an application. The launcher is optional, and both the launcher and the id may
  /// contain dashes, so the name means the first id that has a desktop file. Each id is safe as a
  /// file name.
  [[nodiscard]] std::vector<std::string> applicationIds() const;

  bool operator==(const UnitName&) const = default;

 private:
  explicit UnitName(std::string_view path) : path_(path) {}

  std::string path_;
};

}  // namespace platform

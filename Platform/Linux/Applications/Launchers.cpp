#include "Platform/Linux/Applications/Launchers.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace platform {
namespace {

constexpr std::array kLaunchers = std::to_array<std::string_view>({
    // Shells.
    "ash",
    "bash",
    "busybox",
    "csh",
    "dash",
    "fish",
    "ksh",
    "mksh",
    "pwsh",
    "sh",
    "tcsh",
    "zsh",
    // Interpreters and runtimes.
    "bun",
    "cjs",
    "deno",
    "dotnet",
    "electron",
    "gjs",
    "gjs-console",
    "guile",
    "java",
    "javaw",
    "js",
    "lua",
    "luajit",
    "mono",
    "mono-sgen",
    "node",
    "nodejs",
    "perl",
    "php",
    "pypy",
    "python",
    "qml",
    "qmlscene",
    "ruby",
    "tclsh",
    "wine",
    "wine-preloader",
    "wine64",
    "wish",
    // Starters of other programs.
    "appimagelauncher",
    "bwrap",
    "chroot",
    "chrt",
    "dbus-launch",
    "dbus-run-session",
    "dbus-send",
    "distrobox",
    "distrobox-enter",
    "env",
    "exo-open",
    "flatpak",
    "gamemoderun",
    "gapplication",
    "gdbus",
    "gio",
    "gksu",
    "gksudo",
    "gtk-launch",
    "ionice",
    "kde-open",
    "kdesu",
    "kioclient",
    "kioclient5",
    "mangohud",
    "nice",
    "nohup",
    "optirun",
    "pkexec",
    "podman",
    "prime-run",
    "primusrun",
    "runuser",
    "setsid",
    "snap",
    "su",
    "sudo",
    "sudo-rs",
    "systemd-run",
    "timeout",
    "toolbox",
    "xdg-open",
    "xdg-su",
});

}  // namespace

bool isLauncher(std::string_view name) {
  const std::size_t last = name.find_last_not_of("0123456789.-");
  const std::string_view stem = name.substr(0, last == std::string_view::npos ? 0 : last + 1);
  return std::ranges::find(kLaunchers, name) != kLaunchers.end() ||
         std::ranges::find(kLaunchers, stem) != kLaunchers.end();
}

}  // namespace platform

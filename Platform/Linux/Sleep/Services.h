#pragma once

#include <cstdint>

/// The names of the services that decide on sleep, and the names by which they know this program.
namespace platform::services {

inline constexpr const char* kApplicationId = "com.staylit.app";
inline constexpr const char* kDisplayName = "Staylit";

inline constexpr const char* kLogind = "org.freedesktop.login1";
inline constexpr const char* kLogindPath = "/org/freedesktop/login1";
inline constexpr const char* kLogindManager = "org.freedesktop.login1.Manager";
/// logind's lock on the action of closing the lid.
inline constexpr const char* kLidLock = "handle-lid-switch";

/// GNOME, MATE, Cinnamon. The name is the interface as well.
inline constexpr const char* kSessionManager = "org.gnome.SessionManager";
inline constexpr const char* kSessionManagerPath = "/org/gnome/SessionManager";

/// The interface of each inhibitor's object.
inline constexpr const char* kSessionInhibitor = "org.gnome.SessionManager.Inhibitor";
/// The flags of such an inhibitor.
inline constexpr std::uint32_t kInhibitsSuspend = 4;
inline constexpr std::uint32_t kInhibitsIdle = 8;

/// KDE, XFCE.
inline constexpr const char* kPowerManagement = "org.freedesktop.PowerManagement";
inline constexpr const char* kScreenSaver = "org.freedesktop.ScreenSaver";

/// XFCE alone.
inline constexpr const char* kXfcePowerManager = "org.xfce.PowerManager";

/// MATE alone.
inline constexpr const char* kMatePowerManager = "org.mate.PowerManager";

/// Cinnamon alone.
inline constexpr const char* kCinnamonPowerManager = "org.cinnamon.SettingsDaemon.Power";

/// LXQt alone. It has this name and answers nothing.
inline constexpr const char* kLxqtPowerManager = "org.lxqt.lxqt-powermanagement";

/// KDE alone.
inline constexpr const char* kSolid = "org.kde.Solid.PowerManagement";
inline constexpr const char* kPolicyAgent = "org.kde.Solid.PowerManagement.PolicyAgent";
inline constexpr const char* kPolicyAgentPath = "/org/kde/Solid/PowerManagement/PolicyAgent";

}  // namespace platform::services

#include "Staylit/Desktop/Windows/PlatformChoice.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QLibrary>
#include <QLibraryInfo>
#include <QPluginLoader>
#include <QStringList>

#include "Staylit/Desktop/Windows/DisplayListeners.h"

namespace staylit::windows {
namespace {

QStringList pluginFolders() {
  QStringList folders;
  const QString own = qEnvironmentVariable("QT_QPA_PLATFORM_PLUGIN_PATH");
  if (!own.isEmpty()) folders << own;
  QStringList roots = qEnvironmentVariable("QT_PLUGIN_PATH").split(':', Qt::SkipEmptyParts);
  roots << QLibraryInfo::path(QLibraryInfo::PluginsPath);
  for (const QString& root : roots)
    folders << root + QStringLiteral("/platforms");
  return folders;
}

bool isFor(const QPluginLoader& plugin, const QString& platform) {
  const QJsonValue data = plugin.metaData().value(QLatin1String("MetaData"));
  return data.toObject().value(QLatin1String("Keys")).toArray().contains(platform);
}

/// Whether Qt has a plugin for the platform that can be loaded: it may lack a library.
bool hasPlugin(const QString& platform) {
  for (const QString& folder : pluginFolders()) {
    for (const QFileInfo& file : QDir(folder).entryInfoList({QStringLiteral("*.so")})) {
      QPluginLoader plugin(file.absoluteFilePath());
      if (isFor(plugin, platform) && plugin.load()) return true;
    }
  }
  return false;
}

// The libraries that speak with displays come with Qt's plugins and not with Qt, so they are looked
// up at run time.

std::shared_ptr<void> connectToX() {
  QLibrary xcb(QStringLiteral("xcb"), 1);
  using Connect = void* (*)(const char* display, int* screen);
  using HasError = int (*)(void* connection);
  using Disconnect = void (*)(void* connection);
  const auto connect = reinterpret_cast<Connect>(xcb.resolve("xcb_connect"));
  const auto hasError = reinterpret_cast<HasError>(xcb.resolve("xcb_connection_has_error"));
  const auto disconnect = reinterpret_cast<Disconnect>(xcb.resolve("xcb_disconnect"));
  if (!connect || !hasError || !disconnect) return nullptr;
  // The pointer is never null, even when the connection failed.
  std::shared_ptr<void> connection(connect(nullptr, nullptr), disconnect);
  return hasError(connection.get()) == 0 ? connection : nullptr;
}

std::shared_ptr<void> connectToWayland() {
  QLibrary wayland(QStringLiteral("wayland-client"), 0);
  using Connect = void* (*)(const char* display);
  using Disconnect = void (*)(void* display);
  const auto connect = reinterpret_cast<Connect>(wayland.resolve("wl_display_connect"));
  const auto disconnect = reinterpret_cast<Disconnect>(wayland.resolve("wl_display_disconnect"));
  if (!connect || !disconnect) return nullptr;
  void* display = connect(nullptr);
  return display ? std::shared_ptr<void>(display, disconnect) : nullptr;
}

bool isX(const QString& platform) {
  return platform == QLatin1String("xcb");
}

bool isWayland(const QString& platform) {
  return platform.startsWith(QLatin1String("wayland"));
}

/// No listeners for a platform that needs no display server.
DisplayListeners listenersOf(const QString& platform) {
  if (isWayland(platform)) return DisplayListeners::ofWayland();
  return DisplayListeners(isX(platform) ? qEnvironmentVariable("DISPLAY").toStdString() : "");
}

/// As `choosePlatform`, for one candidate with its options.
std::optional<ChosenPlatform> attempt(const QString& candidate) {
  const QString name = candidate.section(':', 0, 0);
  if (!hasPlugin(name)) {
    qWarning("Staylit: Qt has no usable plugin for %s here", qPrintable(name));
    return std::nullopt;
  }
  const DisplayListeners listeners = listenersOf(name);
  if (listeners.areStrangers()) {
    qWarning("Staylit: the display (%s) is served by another user, or too busy to tell",
             qPrintable(name));
    return std::nullopt;
  }
  ChosenPlatform found{candidate.toStdString(), nullptr};
  if (isX(name)) found.connection = connectToX();
  if (isWayland(name)) found.connection = connectToWayland();
  // All other platforms need no display server.
  if (found.connection || !(isX(name) || isWayland(name))) return found;
  qWarning("Staylit: cannot connect to the display (%s)", qPrintable(name));
  return std::nullopt;
}

/// The platforms to try, by Qt's names, which may have options after a colon.
QStringList candidates() {
  const QString wanted = qEnvironmentVariable("QT_QPA_PLATFORM");
  if (!wanted.isEmpty()) return wanted.split(';', Qt::SkipEmptyParts);
  QStringList found;
  if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY")) found << QStringLiteral("wayland");
  if (qEnvironmentVariableIsSet("DISPLAY")) found << QStringLiteral("xcb");
  // GNOME draws no title bars for Wayland windows, and Qt's own title bars look foreign there.
  const bool isGnome = qEnvironmentVariable("XDG_CURRENT_DESKTOP")
                           .contains(QLatin1String("gnome"), Qt::CaseInsensitive);
  if (isGnome && found.size() == 2) found.swapItemsAt(0, 1);
  return found;
}

}  // namespace

std::optional<ChosenPlatform> choosePlatform() {
  for (const QString& candidate : candidates()) {
    if (auto found = attempt(candidate)) return found;
  }
  return std::nullopt;
}

}  // namespace staylit::windows

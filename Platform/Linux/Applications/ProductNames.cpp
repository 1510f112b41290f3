#include "Platform/Linux/Applications/ProductNames.h"

#include <algorithm>
#include <array>

namespace platform {
namespace {

struct ProductName {
  std::string_view desktopId;
  std::string_view bundleIdentifier;
};

/// An id that the catalogue has itself, such as "org.mozilla.firefox", needs no line. A test
/// version is a product of its own, and so is a program of another maker (a free client for a paid
/// service).
constexpr std::array kProducts = std::to_array<ProductName>({
    {"com.blackmagicdesign.resolve", "com.blackmagic-design.DaVinciResolve"},
    {"DaVinciResolve", "com.blackmagic-design.DaVinciResolve"},
    {"davinci-resolve", "com.blackmagic-design.DaVinciResolve"},
    {"fr.handbrake.ghb", "fr.handbrake.HandBrake"},
    {"ghb", "fr.handbrake.HandBrake"},
    {"handbrake", "fr.handbrake.HandBrake"},
    {"google-chrome", "com.google.Chrome"},
    {"google-chrome-stable", "com.google.Chrome"},
    {"firefox", "org.mozilla.firefox"},
    {"firefox-esr", "org.mozilla.firefox"},
    {"firefox-wayland", "org.mozilla.firefox"},
    {"firefox-x11", "org.mozilla.firefox"},
    {"firefox_firefox", "org.mozilla.firefox"},
    {"mozilla-firefox", "org.mozilla.firefox"},
    {"org.mozilla.Firefox", "org.mozilla.firefox"},
    {"com.microsoft.Edge", "com.microsoft.edgemac"},
    {"microsoft-edge", "com.microsoft.edgemac"},
    {"microsoft-edge-stable", "com.microsoft.edgemac"},
    {"com.transmissionbt.Transmission", "org.m0k.transmission"},
    {"transmission", "org.m0k.transmission"},
    {"transmission-gtk", "org.m0k.transmission"},
    {"transmission-qt", "org.m0k.transmission"},
    {"transmission_transmission", "org.m0k.transmission"},
    {"qbittorrent", "org.qbittorrent.qBittorrent"},
    {"qbittorrent-arnatious_qbittorrent", "org.qbittorrent.qBittorrent"},
    {"docker-desktop", "com.docker.docker"},
    {"com.dropbox.Client", "com.getdropbox.dropbox"},
    {"dropbox", "com.getdropbox.dropbox"},
});

}  // namespace

std::string bundleIdentifierOf(std::string_view desktopId) {
  const auto found = std::ranges::find(kProducts, desktopId, &ProductName::desktopId);
  return std::string(found == kProducts.end() ? desktopId : found->bundleIdentifier);
}

}  // namespace platform

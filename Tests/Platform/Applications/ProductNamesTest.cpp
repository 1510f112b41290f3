#include "Platform/Linux/Applications/ProductNames.h"

#include <gtest/gtest.h>

#include "Tests/Fakes/FakeText.h"
#include "Tidewell/AppCatalog.h"

namespace platform {
namespace {

/// The catalogue's name for the application of a desktop file; "-" when the catalogue does not know
/// it.
std::string displayOf(std::string_view desktopId) {
  tidewell::FakeText text;
  const std::string identifier = bundleIdentifierOf(desktopId);
  const tidewell::CatalogEntry* entry = tidewell::AppCatalog::lookup(identifier, identifier, text);
  return entry == nullptr ? "-" : entry->display;
}

TEST(ProductNames, GiveEveryPackageOfAProductTheCataloguesIdentifier) {
  for (const char* id : {"firefox", "firefox-esr", "firefox_firefox", "org.mozilla.firefox"}) {
    EXPECT_EQ(bundleIdentifierOf(id), "org.mozilla.firefox") << id;
  }
  for (const char* id : {"google-chrome", "com.google.Chrome"}) {
    EXPECT_EQ(bundleIdentifierOf(id), "com.google.Chrome") << id;
  }
}

TEST(ProductNames, LeadToTheEntriesOfTheCatalogue) {
  EXPECT_EQ(displayOf("com.blackmagicdesign.resolve"), "DaVinci Resolve");
  EXPECT_EQ(displayOf("fr.handbrake.ghb"), "HandBrake");
  EXPECT_EQ(displayOf("google-chrome"), "Google Chrome");
  EXPECT_EQ(displayOf("firefox-esr"), "Firefox");
  EXPECT_EQ(displayOf("microsoft-edge"), "Microsoft Edge");
  EXPECT_EQ(displayOf("com.microsoft.Edge"), "Microsoft Edge");
  EXPECT_EQ(displayOf("transmission-gtk"), "Transmission");
  EXPECT_EQ(displayOf("transmission-qt"), "Transmission");
  EXPECT_EQ(displayOf("com.transmissionbt.Transmission"), "Transmission");
  EXPECT_EQ(displayOf("org.qbittorrent.qBittorrent"), "qBittorrent");
  EXPECT_EQ(displayOf("qbittorrent"), "qBittorrent");
  EXPECT_EQ(displayOf("docker-desktop"), "Docker");
  EXPECT_EQ(displayOf("dropbox"), "Dropbox");
  EXPECT_EQ(displayOf("com.dropbox.Client"), "Dropbox");
}

TEST(ProductNames, LeaveEveryOtherIdAsItIs) {
  EXPECT_EQ(bundleIdentifierOf("org.gnome.Nautilus"), "org.gnome.Nautilus");
  EXPECT_EQ(bundleIdentifierOf("Firefox"), "Firefox");
  EXPECT_EQ(bundleIdentifierOf("google-chrome-beta"), "google-chrome-beta");
  EXPECT_EQ(bundleIdentifierOf(""), "");
  EXPECT_EQ(displayOf("org.gnome.Nautilus"), "-");
}

}  // namespace
}  // namespace platform

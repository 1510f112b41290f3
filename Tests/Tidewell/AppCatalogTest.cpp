#include "Tidewell/AppCatalog.h"

#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Tests/Fakes/FakePorts.h"

namespace tidewell {
namespace {

/// An entry of the table, with its identifiers joined by commas.
struct ExpectedEntry {
  std::string display;
  AppCategory category;
  std::string bundleIDs;
  std::string executables;
  std::optional<double> cpuFloor;
};

constexpr std::nullopt_t none = std::nullopt;

std::vector<ExpectedEntry> expectedEntries() {
  return {
      {"Final Cut Pro", AppCategory::videoAudio, "com.apple.FinalCut", "", 8.0},
      {"Compressor", AppCategory::videoAudio, "com.apple.Compressor", "", 8.0},
      {"Motion", AppCategory::videoAudio, "com.apple.motionapp", "", 8.0},
      {"Adobe Premiere Pro", AppCategory::videoAudio, "com.adobe.premierepro", "", 8.0},
      {"Adobe Media Encoder", AppCategory::videoAudio, "com.adobe.ame", "", 8.0},
      {"After Effects", AppCategory::videoAudio, "com.adobe.aftereffects", "", 8.0},
      {"DaVinci Resolve", AppCategory::videoAudio, "com.blackmagic-design.DaVinciResolve", "", 8.0},
      {"Logic Pro", AppCategory::videoAudio, "com.apple.logic10", "", 8.0},
      {"HandBrake", AppCategory::videoAudio, "fr.handbrake.HandBrake", "HandBrakeCLI", 8.0},
      {"ffmpeg", AppCategory::videoAudio, "", "ffmpeg,ffprobe", 5.0},
      {"Google Chrome", AppCategory::downloads, "com.google.Chrome", "", none},
      {"Safari", AppCategory::downloads, "com.apple.Safari", "", none},
      {"Arc", AppCategory::downloads, "company.thebrowser.Browser", "", none},
      {"Firefox", AppCategory::downloads, "org.mozilla.firefox", "", none},
      {"Microsoft Edge", AppCategory::downloads, "com.microsoft.edgemac", "", none},
      {"Transmission", AppCategory::downloads, "org.m0k.transmission", "", none},
      {"qBittorrent", AppCategory::downloads, "org.qbittorrent.qBittorrent", "", none},
      {"curl / wget", AppCategory::downloads, "", "curl,wget,aria2c", none},
      {"Claude Code", AppCategory::aiAgents, "", "claude", 3.0},
      {"Codex", AppCategory::aiAgents, "", "codex", 3.0},
      {"Gemini CLI", AppCategory::aiAgents, "", "gemini", 3.0},
      {"Aider", AppCategory::aiAgents, "", "aider", 3.0},
      {"Ollama", AppCategory::aiAgents, "com.electron.ollama", "ollama", 3.0},
      {"Xcode", AppCategory::development, "com.apple.dt.Xcode", "", 8.0},
      {"Docker", AppCategory::development, "com.docker.docker", "com.docker.backend,dockerd", 8.0},
      {"npm / node", AppCategory::development, "", "npm,node,pnpm,yarn,bun", 8.0},
      {"cargo / rustc", AppCategory::development, "", "cargo,rustc", 8.0},
      {"Gradle / Maven", AppCategory::development, "", "gradle,java,mvn", 8.0},
      {"swift / clang", AppCategory::development, "", "swift,swift-frontend,clang,ld", 8.0},
      {"make / cmake", AppCategory::development, "", "make,cmake,ninja", 8.0},
      {"Python", AppCategory::development, "", "python,python3,pip,pip3", 8.0},
      {"Dropbox", AppCategory::syncBackup, "com.getdropbox.dropbox", "", none},
      {"Google Drive", AppCategory::syncBackup, "com.google.GoogleDrive", "", none},
      {"Backblaze", AppCategory::syncBackup, "com.backblaze.bzbmenu", "bzfilelist,bztransmit",
       none},
      {"iCloud Drive", AppCategory::syncBackup, "com.apple.bird", "bird,cloudd", none},
      {"OneDrive", AppCategory::syncBackup, "com.microsoft.OneDrive", "", none},
      {"Time Machine", AppCategory::syncBackup, "", "backupd", none},
      {"rsync", AppCategory::syncBackup, "", "rsync,rclone", none},
  };
}

std::string joined(const std::vector<std::string>& texts) {
  std::string result;
  for (const std::string& text : texts)
    result += (result.empty() ? "" : ",") + text;
  return result;
}

class AppCatalogTest : public testing::Test {
 protected:
  /// The display name of the entry that is found, or "nothing".
  static std::string found(std::optional<std::string_view> bundleID, std::string_view executable) {
    const CatalogEntry* entry = AppCatalog::lookup(bundleID, executable);
    return entry == nullptr ? "nothing" : entry->display;
  }

  FakePorts fakes;
};

TEST_F(AppCatalogTest, HoldsTheTableInItsOrder) {
  const std::vector<ExpectedEntry> expected = expectedEntries();
  const std::vector<CatalogEntry>& entries = AppCatalog::entries();
  ASSERT_EQ(entries.size(), 38U);
  ASSERT_EQ(expected.size(), 38U);
  for (std::size_t row = 0; row < expected.size(); ++row) {
    SCOPED_TRACE(expected[row].display);
    EXPECT_EQ(entries[row].display, expected[row].display);
    EXPECT_EQ(entries[row].category, expected[row].category);
    EXPECT_EQ(joined(entries[row].bundleIDs), expected[row].bundleIDs);
    EXPECT_EQ(joined(entries[row].executables), expected[row].executables);
    EXPECT_EQ(entries[row].cpuFloor, expected[row].cpuFloor);
  }
}

TEST_F(AppCatalogTest, IsBuiltOnce) {
  const CatalogEntry* make = AppCatalog::lookup(none, "make");
  ASSERT_NE(make, nullptr);
  EXPECT_EQ(make, &AppCatalog::entries()[29]);
  EXPECT_EQ(AppCatalog::lookup(none, "ninja"), make);
}

TEST_F(AppCatalogTest, NamesNoIdentifierTwice) {
  std::set<std::string> seen;
  for (const CatalogEntry& entry : AppCatalog::entries()) {
    for (const std::string& identifier : entry.identifiers()) {
      EXPECT_TRUE(seen.insert(fakes.text.lowercased(identifier)).second) << identifier;
    }
  }
}

TEST_F(AppCatalogTest, FindsEveryEntryByEachOfItsIdentifiers) {
  for (const CatalogEntry& entry : AppCatalog::entries()) {
    for (const std::string& identifier : entry.identifiers()) {
      EXPECT_EQ(AppCatalog::lookup(identifier, identifier), &entry) << identifier;
    }
  }
}

TEST_F(AppCatalogTest, FindsABundleIdentifierInUpperCase) {
  EXPECT_EQ(found("COM.APPLE.SAFARI", "anything"), "Safari");
}

TEST_F(AppCatalogTest, FindsAnExecutableWithoutABundleIdentifierIgnoringCase) {
  EXPECT_EQ(found(none, "Python3"), "Python");
}

TEST_F(AppCatalogTest, FallsBackToTheExecutableOfAnUnknownBundle) {
  EXPECT_EQ(found("com.example.unknown", "node"), "npm / node");
}

TEST_F(AppCatalogTest, PrefersTheBundleIdentifierToTheExecutable) {
  EXPECT_EQ(found("com.apple.Safari", "node"), "Safari");
}

TEST_F(AppCatalogTest, FindsDockerByItsBackendGivenAsBothKinds) {
  EXPECT_EQ(found("com.docker.backend", "com.docker.backend"), "Docker");
}

TEST_F(AppCatalogTest, FindsNoExecutableByABundleIdentifier) {
  EXPECT_EQ(found(none, "com.apple.Safari"), "nothing");
  EXPECT_EQ(found("node", "anything"), "nothing");
}

TEST_F(AppCatalogTest, FindsNothingForAnEmptyExecutable) {
  EXPECT_EQ(found(none, ""), "nothing");
  EXPECT_EQ(found("", ""), "nothing");
}

TEST_F(AppCatalogTest, FindsNothingForAnIdentifierBetweenBlanks) {
  EXPECT_EQ(found(none, "node "), "nothing");
}

TEST_F(AppCatalogTest, LowerCasesBeyondASCII) {
  fakes.text.lowercase["\u212A"] = "k";  // KELVIN SIGN
  EXPECT_EQ(found(none, "MA\u212AE"), "make / cmake");
}

TEST_F(AppCatalogTest, ListsTheIdentifiersOfBackblazeBundlesFirst) {
  const CatalogEntry* backblaze = AppCatalog::lookup("com.backblaze.bzbmenu", "");
  ASSERT_NE(backblaze, nullptr);
  EXPECT_EQ(backblaze->identifiers(),
            (std::vector<std::string>{"com.backblaze.bzbmenu", "bzfilelist", "bztransmit"}));
}

}  // namespace
}  // namespace tidewell

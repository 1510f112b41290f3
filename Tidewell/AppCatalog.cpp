#include "Tidewell/AppCatalog.h"

#include <utility>

#include "Tidewell/Ports/Ports.h"

namespace tidewell {
namespace {

using enum AppCategory;

std::vector<CatalogEntry> makeEntries() {
  constexpr std::nullopt_t none = std::nullopt;
  return {
      {"Final Cut Pro", videoAudio, {"com.apple.FinalCut"}, {}, 8.0},
      {"Compressor", videoAudio, {"com.apple.Compressor"}, {}, 8.0},
      {"Motion", videoAudio, {"com.apple.motionapp"}, {}, 8.0},
      {"Adobe Premiere Pro", videoAudio, {"com.adobe.premierepro"}, {}, 8.0},
      {"Adobe Media Encoder", videoAudio, {"com.adobe.ame"}, {}, 8.0},
      {"After Effects", videoAudio, {"com.adobe.aftereffects"}, {}, 8.0},
      {"DaVinci Resolve", videoAudio, {"com.blackmagic-design.DaVinciResolve"}, {}, 8.0},
      {"Logic Pro", videoAudio, {"com.apple.logic10"}, {}, 8.0},
      {"HandBrake", videoAudio, {"fr.handbrake.HandBrake"}, {"HandBrakeCLI"}, 8.0},
      // Encoders wait for their input more than editors do, so their floor is lower.
      {"ffmpeg", videoAudio, {}, {"ffmpeg", "ffprobe"}, 5.0},
      {"Google Chrome", downloads, {"com.google.Chrome"}, {}, none},
      {"Safari", downloads, {"com.apple.Safari"}, {}, none},
      {"Arc", downloads, {"company.thebrowser.Browser"}, {}, none},
      {"Firefox", downloads, {"org.mozilla.firefox"}, {}, none},
      {"Microsoft Edge", downloads, {"com.microsoft.edgemac"}, {}, none},
      {"Transmission", downloads, {"org.m0k.transmission"}, {}, none},
      {"qBittorrent", downloads, {"org.qbittorrent.qBittorrent"}, {}, none},
      {"curl / wget", downloads, {}, {"curl", "wget", "aria2c"}, none},
      {"Claude Code", aiAgents, {}, {"claude"}, 3.0},
      {"Codex", aiAgents, {}, {"codex"}, 3.0},
      {"Gemini CLI", aiAgents, {}, {"gemini"}, 3.0},
      {"Aider", aiAgents, {}, {"aider"}, 3.0},
      {"Ollama", aiAgents, {"com.electron.ollama"}, {"ollama"}, 3.0},
      {"Xcode", development, {"com.apple.dt.Xcode"}, {}, 8.0},
      {"Docker", development, {"com.docker.docker"}, {"com.docker.backend", "dockerd"}, 8.0},
      {"npm / node", development, {}, {"npm", "node", "pnpm", "yarn", "bun"}, 8.0},
      {"cargo / rustc", development, {}, {"cargo", "rustc"}, 8.0},
      {"Gradle / Maven", development, {}, {"gradle", "java", "mvn"}, 8.0},
      {"swift / clang", development, {}, {"swift", "swift-frontend", "clang", "ld"}, 8.0},
      {"make / cmake", development, {}, {"make", "cmake", "ninja"}, 8.0},
      {"Python", development, {}, {"python", "python3", "pip", "pip3"}, 8.0},
      {"Dropbox", syncBackup, {"com.getdropbox.dropbox"}, {}, none},
      {"Google Drive", syncBackup, {"com.google.GoogleDrive"}, {}, none},
      {"Backblaze", syncBackup, {"com.backblaze.bzbmenu"}, {"bzfilelist", "bztransmit"}, none},
      {"iCloud Drive", syncBackup, {"com.apple.bird"}, {"bird", "cloudd"}, none},
      {"OneDrive", syncBackup, {"com.microsoft.OneDrive"}, {}, none},
      {"Time Machine", syncBackup, {}, {"backupd"}, none},
      {"rsync", syncBackup, {}, {"rsync", "rclone"}, none},
  };
}

/// The table's own identifiers are ASCII, so the indexes need no Unicode tables.
std::string lowercasedASCII(std::string text) {
  for (char& character : text) {
    if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
  }
  return text;
}

AppCatalog::Index makeIndex(std::vector<std::string> CatalogEntry::*identifiers) {
  AppCatalog::Index index;
  for (const CatalogEntry& entry : AppCatalog::entries()) {
    for (const std::string& identifier : entry.*identifiers) {
      index.insert_or_assign(lowercasedASCII(identifier), &entry);
    }
  }
  return index;
}

const CatalogEntry* find(const AppCatalog::Index& index, std::string_view identifier, Text& text) {
  const auto found = index.find(text.lowercased(identifier));
  return found == index.end() ? nullptr : found->second;
}

}  // namespace

CatalogEntry::CatalogEntry(std::string displayName, AppCategory appCategory,
                           std::vector<std::string> bundles, std::vector<std::string> programs,
                           std::optional<double> floor)
    : display(std::move(displayName)),
      category(appCategory),
      bundleIDs(std::move(bundles)),
      executables(std::move(programs)),
      cpuFloor(floor) {}

std::vector<std::string> CatalogEntry::identifiers() const {
  std::vector<std::string> all = bundleIDs;
  all.insert(all.end(), executables.begin(), executables.end());
  return all;
}

const std::vector<CatalogEntry>& AppCatalog::entries() {
  static const std::vector<CatalogEntry> all = makeEntries();
  return all;
}

const AppCatalog::Index& AppCatalog::byBundle() {
  static const Index index = makeIndex(&CatalogEntry::bundleIDs);
  return index;
}

const AppCatalog::Index& AppCatalog::byExecutable() {
  static const Index index = makeIndex(&CatalogEntry::executables);
  return index;
}

const CatalogEntry* AppCatalog::lookup(std::optional<std::string_view> bundleID,
                                       std::string_view executable) {
  return lookup(bundleID, executable, *InstalledPorts::current().text);
}

const CatalogEntry* AppCatalog::lookup(std::optional<std::string_view> bundleID,
                                       std::string_view executable, Text& text) {
  if (bundleID) {
    if (const CatalogEntry* entry = find(byBundle(), *bundleID, text)) return entry;
  }
  return find(byExecutable(), executable, text);
}

}  // namespace tidewell

#include "Platform/Linux/Applications/DesktopFiles.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "Platform/Linux/Applications/ExecWords.h"
#include "Platform/Linux/Applications/Launchers.h"
#include "Platform/Linux/Files/RegularFile.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

/// Even a file with names in a hundred languages has only a tenth of this size.
constexpr std::size_t kCapacity = std::size_t{1} << 20;

std::optional<DesktopApplication> applicationOf(std::string_view id,
                                                const std::optional<DesktopEntry>& entry) {
  if (!entry || entry->hidden || entry->type != "Application" || entry->name.empty()) return {};
  return DesktopApplication{std::string(id), entry->name};
}

/// How many words of a command are always the same: the program and its arguments, but no place for
/// a file or an address.
std::size_t countFixedWords(const std::vector<std::string>& words) {
  const auto isFixed = [](const std::string& word) { return !word.starts_with('%'); };
  return static_cast<std::size_t>(std::ranges::count_if(words, isFixed));
}

bool isProgram(const fs::path& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         access(path.c_str(), X_OK) == 0;
}

}  // namespace

DesktopFiles::DesktopFiles(ApplicationPlaces places)
    : places_(std::move(places)),
      localeVariants_(DesktopEntry::localeVariants(places_.locale)),
      folders_(places_.applicationFolders) {}

std::optional<DesktopApplication> DesktopFiles::find(std::string_view id) {
  scanOnce();
  const auto file = folders_.fileById().find(id);
  if (file == folders_.fileById().end()) return std::nullopt;
  const auto known = found_.find(id);
  if (known != found_.end()) return known->second;
  auto application = applicationOf(id, read(file->second));
  return found_.emplace(id, std::move(application)).first->second;
}

std::optional<DesktopApplication> DesktopFiles::findByProgram(std::string_view path) {
  scanOnce();
  if (!programs_) buildProgramIndex();
  const auto found = programs_->find(path);
  if (found == programs_->end()) return std::nullopt;
  return found->second.application;
}

void DesktopFiles::refresh() {
  if (!isScanned_ || !folders_.hasChanged()) return;
  isScanned_ = false;
  found_.clear();
  programs_.reset();
}

void DesktopFiles::scanOnce() {
  if (isScanned_) return;
  folders_.scan();
  isScanned_ = true;
}

std::optional<DesktopEntry> DesktopFiles::read(const fs::path& file) const {
  const RegularFile content = readRegularFile(file, kCapacity);
  if (!content.exists) return std::nullopt;
  return DesktopEntry::parse(content.text, localeVariants_);
}

void DesktopFiles::buildProgramIndex() {
  programs_.emplace();
  for (const auto& [id, file] : folders_.fileById()) {
    const std::optional<DesktopEntry> entry = read(file);
    const std::optional<DesktopApplication> application = applicationOf(id, entry);
    if (!application || entry->terminal) continue;
    const std::vector<std::string> words = execWords(entry->exec);
    const Rank rank(entry->noDisplay, countFixedWords(words), id);
    if (!words.empty()) claim(words.front(), rank, *application);
    // The command may be a starter of other programs. `TryExec` may name the program that it
    // starts.
    claim(entry->tryExec, rank, *application);
  }
}

void DesktopFiles::claim(const std::string& program, const Rank& rank,
                         const DesktopApplication& application) {
  const std::optional<fs::path> path = locate(program);
  if (!path || isLauncher(fs::path(program).filename().string()) ||
      isLauncher(path->filename().string())) {
    return;
  }
  const auto [place, isNew] = programs_->try_emplace(path->string(), Claim{rank, application});
  if (!isNew && rank < place->second.rank) place->second = {rank, application};
}

std::optional<fs::path> DesktopFiles::locate(const std::string& program) const {
  std::vector<fs::path> candidates;
  if (program.starts_with('/')) candidates.emplace_back(program);
  if (!program.empty() && program.find('/') == std::string::npos) {
    for (const fs::path& folder : places_.programFolders)
      candidates.push_back(folder / program);
  }
  const auto found = std::ranges::find_if(candidates, isProgram);
  if (found == candidates.end()) return std::nullopt;
  std::error_code error;
  const fs::path real = fs::canonical(*found, error);
  return error ? std::nullopt : std::optional(real);
}

}  // namespace platform

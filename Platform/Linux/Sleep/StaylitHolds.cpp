#include "Platform/Linux/Sleep/StaylitHolds.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

#include "Platform/Linux/Files/OwnProgram.h"
#include "Platform/Linux/Sleep/Services.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kProgram = "staylit";
/// The kernel keeps so many bytes of a program's name.
constexpr std::size_t kLongestCommand = 15;

/// The reason that GNOME's session manager, and those that descend from it, give for what they pass
/// on.
constexpr std::string_view kPassedOn = "user session inhibited";
/// The programs that may pass on the wishes of others.
constexpr std::array<std::string_view, 15> kPassingOn = {"gnome-session-binary",
                                                         "gnome-session-service",
                                                         "gsd-power",
                                                         "cinnamon-session",
                                                         "csd-power",
                                                         "mate-session",
                                                         "mate-power-manager",
                                                         "xfce4-session",
                                                         "xfce4-power-manager",
                                                         "org_kde_powerdevil",
                                                         "ksmserver",
                                                         "kded5",
                                                         "kded6",
                                                         "lxqt-powermanagement",
                                                         "budgie-session-binary"};

bool isStaylitsName(std::string_view name) {
  return name == services::kDisplayName || name == services::kApplicationId || name == kProgram;
}

fs::path processFile(std::int64_t process, const char* name) {
  return fs::path("/proc") / std::to_string(process) / name;
}

std::string commandOf(std::int64_t process) {
  std::ifstream file(processFile(process, "comm"));
  std::string command;
  std::getline(file, command);
  return command;
}

/// Whether the process runs this program, or one of the same name. The program of another user's
/// process cannot be seen.
bool runsStaylit(std::int64_t process) {
  const fs::path link = processFile(process, "exe");
  std::error_code error;
  if (fs::equivalent(link, "/proc/self/exe", error)) return true;
  return programOfLink(fs::read_symlink(link, error).native()).filename() == kProgram;
}

bool passesOn(std::string_view name, std::size_t longest) {
  return std::ranges::any_of(
      kPassingOn, [&](std::string_view program) { return name == program.substr(0, longest); });
}

bool mayBeOfAStaylit(std::int64_t process) {
  const std::string command = commandOf(process);
  return command == kProgram || passesOn(command, kLongestCommand) || runsStaylit(process);
}

}  // namespace

bool StaylitHolds::mayHave(const ListedInhibitor& inhibitor) {
  if (isStaylitsName(inhibitor.holder) || inhibitor.why == kPassedOn ||
      passesOn(inhibitor.holder, std::string_view::npos)) {
    return true;
  }
  const std::int64_t process = inhibitor.processIdentifier;
  if (process <= 0) return false;
  const auto [known, isNew] = byProcess_.try_emplace(process, false);
  if (isNew) known->second = mayBeOfAStaylit(process);
  return known->second;
}

bool mayBePassedOn(const ListedInhibitor& inhibitor) {
  if (inhibitor.why == kPassedOn || passesOn(inhibitor.holder, std::string_view::npos)) return true;
  return inhibitor.processIdentifier > 0 &&
         passesOn(commandOf(inhibitor.processIdentifier), kLongestCommand);
}

}  // namespace platform

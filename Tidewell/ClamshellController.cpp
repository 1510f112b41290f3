#include "Tidewell/ClamshellController.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "Tidewell/Log.h"
#include "Tidewell/Ports/Ports.h"
#include "Tidewell/Utf8.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;

/// Far more than any tool here prints.
constexpr std::size_t kOutputLimit = 4 << 20;
constexpr Seconds kPollInterval = 10ms;
/// A tool that closes its output and never ends must not keep the program waiting longer than 20 s.
constexpr int kMostPolls = 2000;
constexpr std::int64_t kUserCancelled = -128;

constexpr const char* kPowerTool = "/usr/bin/pmset";
constexpr const char* kAgentTool = "/bin/launchctl";
constexpr const char* kSleepOff = "pmset -a disablesleep 1";
constexpr const char* kSleepOn = "pmset -a disablesleep 0";

Ports& ports() {
  return InstalledPorts::current();
}

struct Configuration {
  std::optional<std::string> ownerProcessName;  ///< Absent until first used or set.
  std::string watchdogLabel = "com.tidewell.clamshell-watchdog";
};

/// The names begin with their defaults again whenever other ports are installed.
Configuration& configuration() {
  static Configuration only;
  static std::uint64_t generation = 0;
  if (generation != InstalledPorts::generation()) {
    only = {};
    generation = InstalledPorts::generation();
  }
  return only;
}

/// The file that describes the agent, which looks at once and then every minute. The names are
/// inserted without escaping.
std::string watchdogText(const std::string& label, const std::string& owner) {
  return R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0"><dict>
  <key>Label</key><string>)" +
         label +
         R"(</string>
  <key>ProgramArguments</key>
  <array>
    <string>/bin/sh</string><string>-c</string>
    <string>pgrep -x )" +
         owner +
         R"( >/dev/null || /usr/bin/pmset -a disablesleep 0</string>
  </array>
  <key>RunAtLoad</key><true/>
  <key>StartInterval</key><integer>60</integer>
</dict></plist>)";
}

std::string parentOf(const std::string& path) {
  return path.substr(0, path.rfind('/'));
}

std::string escapedForScript(std::string_view command) {
  std::string escaped;
  for (const char character : command) {
    if (character == '"') escaped += '\\';
    escaped += character;
  }
  return escaped;
}

constexpr std::string_view kSpaces = " \t\n\v\f\r";

/// Whether `text` begins with spaces and a 1. Versions of the tool space their columns differently.
bool beginsWithSpacesAndOne(std::string_view text) {
  const std::size_t digit = text.find_first_not_of(kSpaces);
  return digit != std::string_view::npos && digit > 0 && text[digit] == '1';
}

/// Whether the tool's list of settings says that sleep is switched off: `SleepDisabled\s+1`.
bool saysSleepDisabled(std::string_view output) {
  constexpr std::string_view kWord = "SleepDisabled";
  for (auto at = output.find(kWord); at != std::string_view::npos; at = output.find(kWord)) {
    output.remove_prefix(at + kWord.size());
    if (beginsWithSpacesAndOne(output)) return true;
  }
  return false;
}

/// Whether the lid switch did what it was asked to do. A failure is logged unless the user
/// declined.
bool succeeded(const std::optional<LidSwitch::Failure>& failure) {
  if (failure && !failure->wasDeclined)
    Log::error("privileged command failed: " + failure->description);
  return !failure;
}

/// Logs that sleep is switched off, unless the lid switch failed. Returns whether sleep is
/// off.
bool hasDisabledSleep(const std::optional<LidSwitch::Failure>& failure) {
  if (!succeeded(failure)) return false;
  Log::info("clamshell sleep disabled");
  return true;
}

bool restoreSleep(LidSwitch& lidSwitch) {
  const bool wasHeld = lidSwitch.holds();
  if (!succeeded(lidSwitch.release())) return false;
  // Without a hold there was nothing to restore.
  if (wasHeld) Log::info("clamshell sleep restored");
  return true;
}

}  // namespace

std::string ClamshellController::ownerProcessName() {
  auto& name = configuration().ownerProcessName;
  if (!name) name = ports().processInfo->processName();
  return *name;
}

void ClamshellController::setOwnerProcessName(std::string name) {
  configuration().ownerProcessName = std::move(name);
}

std::string ClamshellController::watchdogLabel() {
  return configuration().watchdogLabel;
}

void ClamshellController::setWatchdogLabel(std::string label) {
  configuration().watchdogLabel = std::move(label);
}

std::string ClamshellController::watchdogURL() {
  return ports().fileManager->homeDirectory() + "/Library/LaunchAgents/" + watchdogLabel() +
         ".plist";
}

bool ClamshellController::enable() {
  if (const auto& lidSwitch = ports().lidSwitch) return hasDisabledSleep(lidSwitch->hold());
  if (!runPrivileged(kSleepOff)) return false;
  installWatchdog();
  Log::info("clamshell sleep disabled");
  return true;
}

void ClamshellController::enable(std::function<void(bool)> done) {
  const auto& lidSwitch = ports().lidSwitch;
  if (!lidSwitch) return done(enable());
  lidSwitch->holdAsking(
      [done = std::move(done)](const auto& failure) { done(hasDisabledSleep(failure)); });
}

bool ClamshellController::resume() {
  const auto& lidSwitch = ports().lidSwitch;
  if (!lidSwitch) return true;
  const auto failure = lidSwitch->resume();
  return hasDisabledSleep(failure) || failure->isTriedAgain;
}

bool ClamshellController::disable() {
  if (const auto& lidSwitch = ports().lidSwitch) return restoreSleep(*lidSwitch);
  // The watchdog goes first, so that it is gone even if the user declines the command.
  removeWatchdog();
  if (!runPrivileged(kSleepOn)) return false;
  Log::info("clamshell sleep restored");
  return true;
}

bool ClamshellController::isDisabled() {
  if (const auto& lidSwitch = ports().lidSwitch) return lidSwitch->isHeld();
  const auto output = run(kPowerTool, {"-g"});
  return output && saysSleepDisabled(*output);
}

void ClamshellController::installWatchdog() {
  FileManager& files = *ports().fileManager;
  const std::string path = watchdogURL();
  std::optional<std::string> failure = files.createDirectory(parentOf(path));
  if (!failure)
    failure = files.writeAtomically(path, watchdogText(watchdogLabel(), ownerProcessName()));
  if (failure) {
    Log::error("watchdog install failed: " + *failure);
    return;
  }
  run(kAgentTool, {"load", "-w", path});
}

void ClamshellController::removeWatchdog() {
  FileManager& files = *ports().fileManager;
  const std::string path = watchdogURL();
  if (!files.exists(path)) return;
  run(kAgentTool, {"unload", "-w", path});
  files.remove(path);
}

/// What the tool prints, however it ends. Absent when it cannot be launched or prints something
/// that is not valid UTF-8.
std::optional<std::string> ClamshellController::run(const std::string& path,
                                                    const std::vector<std::string>& arguments) {
  const TaskLauncher::Launch launch = ports().taskLauncher->launch(path, arguments);
  if (!launch.task) return std::nullopt;
  std::optional<std::string> output = launch.task->readToEnd(kOutputLimit);
  if (!output) return std::nullopt;
  for (int poll = 0; poll < kMostPolls && launch.task->isRunning(); ++poll)
    ports().clock->sleepFor(kPollInterval);
  return isValidUtf8(*output) ? output : std::nullopt;
}

/// Runs the command with an administrator's rights. The system asks the user for them.
bool ClamshellController::runPrivileged(const std::string& command) {
  const std::string source =
      "do shell script \"" + escapedForScript(command) + "\" with administrator privileges";
  const PrivilegedScripts::Outcome outcome = ports().privilegedScripts->run(source);
  if (!outcome.couldBeMade) return false;
  if (!outcome.error) return true;
  if (outcome.error->number != kUserCancelled)
    Log::error("privileged command failed: " + outcome.error->description);
  return false;
}

}  // namespace tidewell

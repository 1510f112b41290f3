#include "Tidewell/PowerAssertionReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "Tidewell/ForeignText.h"
#include "Tidewell/Ports/AssertionTable.h"
#include "Tidewell/Ports/Ports.h"

namespace tidewell {
namespace {

constexpr std::array<std::string_view, 3> kBlockingTypes = {
    "PreventUserIdleSystemSleep", "NoIdleSleepAssertion", "PreventSystemSleep"};

/// How many different words of one program are told.
constexpr std::size_t kMostWords = 3;

bool preventsSleep(const ListedAssertion& assertion) {
  // A level that is not told counts as on: rather honour a program's wish to stay awake.
  return std::ranges::find(kBlockingTypes, assertion.type) != kBlockingTypes.end() &&
         assertion.level != 0;
}

std::string nameOf(std::int32_t pid, RunningApplications& applications) {
  if (const auto application = applications.withProcessIdentifier(pid)) {
    if (auto identifier = application->bundleIdentifier()) return *identifier;
    if (auto name = application->localizedName()) return *name;
  }
  return "pid " + std::to_string(pid);
}

std::string wordsOf(const ListedAssertion& assertion, const std::string& name) {
  const std::string owner = assertion.owner == name ? "" : assertion.owner;
  const std::string between = owner.empty() || assertion.reason.empty() ? "" : ": ";
  return cleaned(owner + between + assertion.reason);
}

void addWords(std::vector<std::string>& words, const std::vector<ListedAssertion>& assertions,
              const std::string& name) {
  for (const ListedAssertion& assertion : assertions) {
    if (!preventsSleep(assertion)) continue;
    std::string own = wordsOf(assertion, name);
    const bool isNew = std::ranges::find(words, own) == words.end();
    if (!own.empty() && isNew) words.push_back(std::move(own));
  }
}

/// A reason may well have commas.
std::string joined(const std::vector<std::string>& words) {
  std::string all;
  for (const std::string& one : std::span(words).first(std::min(words.size(), kMostWords)))
    all += (all.empty() ? "" : "; ") + one;
  if (words.size() > kMostWords) all += "; " + std::to_string(words.size() - kMostWords) + " more";
  return all;
}

}  // namespace

std::vector<std::string> PowerAssertionReader::appsPreventingSleep() {
  std::vector<std::string> names;
  std::ranges::transform(programsPreventingSleep(), std::back_inserter(names),
                         &AskingProgram::name);
  return names;
}

std::vector<AskingProgram> PowerAssertionReader::programsPreventingSleep() {
  Ports& ports = InstalledPorts::current();
  const auto holders = ports.assertionTable->assertionsByProcess();
  if (!holders) return {};
  const std::int32_t own = ports.assertionTable->ownProcessIdentifier();
  std::map<std::string, std::vector<std::string>> words;
  for (const auto& [process, assertions] : *holders) {
    const auto pid = static_cast<std::int32_t>(process);
    if (pid == own || std::ranges::none_of(assertions, preventsSleep)) continue;
    const std::string name = nameOf(pid, *ports.runningApplications);
    addWords(words[name], assertions, name);
  }
  std::vector<AskingProgram> programs;
  programs.reserve(words.size());
  for (const auto& [name, differing] : words)
    programs.push_back({name, joined(differing)});
  return programs;
}

}  // namespace tidewell

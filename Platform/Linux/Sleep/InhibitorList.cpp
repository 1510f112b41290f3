#include "Platform/Linux/Sleep/InhibitorList.h"

#include <unistd.h>

#include <algorithm>
#include <set>
#include <utility>

#include "Platform/Linux/Sleep/ListedInhibitor.h"
#include "Platform/Linux/Sleep/LogindList.h"
#include "Platform/Linux/Sleep/PolicyAgentList.h"
#include "Platform/Linux/Sleep/Services.h"
#include "Platform/Linux/Sleep/StaylitHolds.h"

namespace platform {
namespace {

using tidewell::AssertionHolder;

void append(std::vector<AssertionHolder>& holders, std::int64_t identifier,
            const ListedInhibitor& inhibitor) {
  if (inhibitor.types.empty()) return;
  auto found = std::ranges::find(holders, identifier, &AssertionHolder::process);
  if (found == holders.end()) found = holders.insert(holders.end(), {identifier, {}});
  for (const std::string& type : inhibitor.types) {
    found->assertions.push_back({type, inhibitor.level, inhibitor.why, inhibitor.holder});
  }
}

}  // namespace

InhibitorList::InhibitorList(Bus& systemBus, Bus& sessionBus,
                             std::shared_ptr<NamedHolders> namedHolders)
    : systemBus_(systemBus),
      sessionBus_(sessionBus),
      namedHolders_(std::move(namedHolders)),
      sessionManagerList_(sessionBus),
      // Watched so that asking whether it is there costs nothing.
      policyAgentPresence_(sessionBus.watchName(services::kPolicyAgent, {})) {}

std::optional<std::vector<AssertionHolder>> InhibitorList::assertionsByProcess() {
  const auto logind = listLogindInhibitors(systemBus_);
  const auto session = sessionManagerList_.list();
  const auto policyAgent = listPolicyAgentInhibitors(sessionBus_);
  if (!logind && !session && !policyAgent) return std::nullopt;

  StaylitHolds staylits;
  // What keeps nobody awake is not worth a look at its process.
  const auto counts = [&staylits](const ListedInhibitor& inhibitor) {
    return !inhibitor.types.empty() && !staylits.mayHave(inhibitor);
  };
  std::vector<AssertionHolder> holders;
  std::set<std::int32_t> named;
  const auto appendNamed = [&](const ListedInhibitor& inhibitor) {
    const std::int32_t identifier = namedHolders_->identifierFor(inhibitor.holder);
    named.insert(identifier);
    append(holders, identifier, inhibitor);
  };
  const std::vector<ListedInhibitor> none;
  for (const auto& inhibitor : logind.value_or(none)) {
    const bool isOwn = inhibitor.processIdentifier == ownProcessIdentifier();
    if (isOwn || counts(inhibitor)) append(holders, inhibitor.processIdentifier, inhibitor);
  }
  for (const auto& inhibitor : session.value_or(none)) {
    if (counts(inhibitor)) appendNamed(inhibitor);
  }
  for (const auto& inhibitor : policyAgent.value_or(none)) {
    if (counts(inhibitor) && !lists(logind.value_or(none), inhibitor)) appendNamed(inhibitor);
  }
  namedHolders_->keepOnly(named);
  return holders;
}

std::int32_t InhibitorList::ownProcessIdentifier() {
  return ::getpid();
}

}  // namespace platform

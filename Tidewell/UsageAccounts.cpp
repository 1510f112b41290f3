#include "Tidewell/UsageAccounts.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "Tidewell/ProcessSampler.h"

namespace tidewell {
namespace {

/// About five minutes of ticks.
constexpr std::uint64_t kStalePasses = 150;
constexpr std::uint64_t kPassesBetweenFolds = 60;

/// The application of an account: that of the processes that it stands for, under its own number.
class AccountApplication : public RunningApplication {
 public:
  AccountApplication(std::int32_t identifier, const RunningApplication& original)
      : identifier_(identifier),
        bundleIdentifier_(original.bundleIdentifier()),
        localizedName_(original.localizedName()) {}

  std::int32_t processIdentifier() const override { return identifier_; }
  const std::optional<std::string>& bundleIdentifier() const override { return bundleIdentifier_; }
  const std::optional<std::string>& localizedName() const override { return localizedName_; }

 private:
  std::int32_t identifier_;
  std::optional<std::string> bundleIdentifier_;
  std::optional<std::string> localizedName_;
};

}  // namespace

Usage Usage::part(std::uint64_t partTime) const {
  if (partTime == 0) return {};
  if (partTime >= time) return *this;
  const double share = static_cast<double>(partTime) / static_cast<double>(time);
  return {partTime, std::min(disk, static_cast<std::uint64_t>(static_cast<double>(disk) * share))};
}

UsageAccounts::UsageAccounts() {
  accounts_.emplace_back().identifier = kFolded;
}

std::string UsageAccounts::key(std::string_view path, const RunningApplication* application) {
  if (application && application->bundleIdentifier()) return *application->bundleIdentifier();
  if (path.empty() && application && application->localizedName()) {
    return *application->localizedName();
  }
  return path.empty() ? std::string() : std::string(ProcessSampler::nameFromPath(path));
}

std::int32_t UsageAccounts::reserve(std::string_view path, const RunningApplication* application) {
  std::string wanted = key(path, application);
  const auto found = std::ranges::find(accounts_, wanted, &Account::key);
  if (found != accounts_.end()) return found->identifier;
  Account& account = accounts_.emplace_back();
  account.identifier = nextIdentifier_++;
  account.key = std::move(wanted);
  account.path = path;
  if (application) {
    account.application = std::make_shared<AccountApplication>(account.identifier, *application);
  }
  return account.identifier;
}

void UsageAccounts::add(std::int32_t identifier, const Usage& usage) {
  const auto account = std::ranges::lower_bound(accounts_, identifier, {}, &Account::identifier);
  if (account == accounts_.end() || account->identifier != identifier) return;
  if (!std::exchange(account->isListed, true)) ++listedCount_;
  account->usage += usage;
  account->lastGrowth = pass_;
}

std::size_t UsageAccounts::listedByName() const {
  return listedCount_ - (accounts_.front().isListed ? 1 : 0);
}

bool UsageAccounts::isCrowded() const {
  return listedByName() > kMost || pass_ - lastFold_ >= kPassesBetweenFolds;
}

void UsageAccounts::fold(const TextMap<bool>& liveKeys) {
  lastFold_ = pass_;
  Usage folded = takeStale(liveKeys);
  folded += takeOldest(liveKeys);
  if (folded != Usage()) add(kFolded, folded);
}

Usage UsageAccounts::takeStale(const TextMap<bool>& liveKeys) {
  Usage taken;
  std::erase_if(accounts_, [&](const Account& account) {
    const bool isStale = !account.isListed || pass_ - account.lastGrowth >= kStalePasses;
    if (!isStale || account.identifier == kFolded || liveKeys.contains(account.key)) return false;
    taken += account.usage;
    listedCount_ -= account.isListed ? 1 : 0;
    return true;
  });
  return taken;
}

Usage UsageAccounts::takeOldest(const TextMap<bool>& liveKeys) {
  constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();
  const auto growth = [&](const Account& account) {
    const bool mayGo = account.isListed && account.identifier != kFolded;
    return mayGo && !liveKeys.contains(account.key) ? account.lastGrowth : kNever;
  };
  Usage taken;
  while (listedByName() > kMost) {
    const auto oldest = std::ranges::min_element(accounts_, {}, growth);
    if (growth(*oldest) == kNever) break;
    taken += oldest->usage;
    accounts_.erase(oldest);
    --listedCount_;
  }
  return taken;
}

const UsageAccounts::Account* UsageAccounts::find(std::int32_t identifier) const {
  const auto found = std::ranges::lower_bound(accounts_, identifier, {}, &Account::identifier);
  return found == accounts_.end() || found->identifier != identifier ? nullptr : &*found;
}

}  // namespace tidewell

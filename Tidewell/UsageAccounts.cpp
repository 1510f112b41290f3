#include "Tidewell/UsageAccounts.h"

#include <algorithm>
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

std::string UsageAccounts::key(std::string_view path, const RunningApplication* application) {
  if (application && application->bundleIdentifier()) return *application->bundleIdentifier();
  return std::string(ProcessSampler::nameFromPath(path));
}

std::int32_t UsageAccounts::add(std::string_view path, const RunningApplication* application,
                                const Usage& usage) {
  std::string wanted = key(path, application);
  auto found = std::ranges::find(accounts_, wanted, &Account::key);
  if (found == accounts_.end()) {
    Account account;
    account.identifier = nextIdentifier_++;
    account.key = std::move(wanted);
    account.path = path;
    if (application) {
      account.application = std::make_shared<AccountApplication>(account.identifier, *application);
    }
    found = accounts_.insert(accounts_.end(), std::move(account));
  }
  found->usage += usage;
  found->lastGrowth = pass_;
  return found->identifier;
}

bool UsageAccounts::isCrowded() const {
  return accounts_.size() > kMost ||
         (!accounts_.empty() && pass_ - lastFold_ >= kPassesBetweenFolds);
}

void UsageAccounts::fold(const TextMap<bool>& liveKeys) {
  lastFold_ = pass_;
  std::erase_if(accounts_, [&](const Account& account) {
    return pass_ - account.lastGrowth >= kStalePasses && !liveKeys.contains(account.key);
  });
  while (accounts_.size() > kMost) {
    accounts_.erase(std::ranges::min_element(accounts_, {}, &Account::lastGrowth));
  }
}

const UsageAccounts::Account* UsageAccounts::find(std::int32_t identifier) const {
  const auto found = std::ranges::lower_bound(accounts_, identifier, {}, &Account::identifier);
  return found == accounts_.end() || found->identifier != identifier ? nullptr : &*found;
}

}  // namespace tidewell

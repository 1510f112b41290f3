#include "Tidewell/Accounting/AccountBook.h"

#include <algorithm>
#include <utility>

#include "Tidewell/ProcessSampler.h"

namespace tidewell {
namespace {

/// The application of an account: the application of its processes, under the number of the
/// account.
class AccountApplication : public RunningApplication {
 public:
  AccountApplication(std::int32_t identifier, const RunningApplication& original)
      : identifier_(identifier),
        bundleIdentifier_(original.bundleIdentifier()),
        localizedName_(original.localizedName()) {}

  [[nodiscard]] std::int32_t processIdentifier() const override { return identifier_; }
  [[nodiscard]] const std::optional<std::string>& bundleIdentifier() const override {
    return bundleIdentifier_;
  }
  [[nodiscard]] const std::optional<std::string>& localizedName() const override {
    return localizedName_;
  }

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

std::string AccountBook::key(std::string_view path, const RunningApplication* application) {
  if (application && application->bundleIdentifier()) return *application->bundleIdentifier();
  if (path.empty() && application && application->localizedName()) {
    return *application->localizedName();
  }
  return path.empty() ? std::string() : std::string(ProcessSampler::nameFromPath(path));
}

std::int32_t AccountBook::reserve(std::string_view path, const RunningApplication* application) {
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

void AccountBook::add(std::int32_t identifier, const Usage& usage) {
  Account* const account = findToChange(identifier);
  if (!account) return;
  account->isListed = true;
  account->usage += usage;
  account->lastAddition = pass_;
}

void AccountBook::addProcess(std::int32_t identifier) {
  if (Account* const account = findToChange(identifier)) ++account->processes;
}

void AccountBook::removeProcess(std::int32_t identifier) {
  Account* const account = findToChange(identifier);
  if (account && account->processes > 0) --account->processes;
}

void AccountBook::dropEnded() {
  std::erase_if(accounts_, [this](const Account& account) {
    return account.processes == 0 && account.lastAddition != pass_;
  });
}

AccountBook::Account* AccountBook::findToChange(std::int32_t identifier) {
  const auto found = std::ranges::lower_bound(accounts_, identifier, {}, &Account::identifier);
  return found == accounts_.end() || found->identifier != identifier ? nullptr : &*found;
}

const AccountBook::Account* AccountBook::find(std::int32_t identifier) const {
  const auto found = std::ranges::lower_bound(accounts_, identifier, {}, &Account::identifier);
  return found == accounts_.end() || found->identifier != identifier ? nullptr : &*found;
}

}  // namespace tidewell

#include "Platform/Linux/Applications/NamedHolders.h"

#include <limits>

namespace platform {

std::int32_t NamedHolders::identifierFor(const std::string& applicationId) {
  const auto found = identifiers_.find(applicationId);
  if (found != identifiers_.end()) return found->second;
  do {
    last_ = last_ == std::numeric_limits<std::int32_t>::min() ? -1 : last_ - 1;
  } while (applicationIds_.contains(last_));
  identifiers_.emplace(applicationId, last_);
  applicationIds_.emplace(last_, applicationId);
  return last_;
}

std::optional<std::string> NamedHolders::applicationId(std::int32_t identifier) const {
  const auto found = applicationIds_.find(identifier);
  if (found == applicationIds_.end()) return std::nullopt;
  return found->second;
}

void NamedHolders::keepOnly(const std::set<std::int32_t>& identifiers) {
  const auto isForgotten = [&](std::int32_t identifier) {
    return !identifiers.contains(identifier);
  };
  std::erase_if(identifiers_, [&](const auto& entry) { return isForgotten(entry.second); });
  std::erase_if(applicationIds_, [&](const auto& entry) { return isForgotten(entry.first); });
}

}  // namespace platform

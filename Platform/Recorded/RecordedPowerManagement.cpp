#include "Platform/Recorded/RecordedPowerManagement.h"

#include <utility>

#include "Tidewell/Log.h"

namespace platform {

RecordedPowerManagement::Creation RecordedPowerManagement::createAssertion(
    tidewell::AssertionKind kind, const std::string& name) {
  if (!std::exchange(saidSo_, true)) {
    tidewell::Log::info("no sleep service here: holds are recorded only");
  }
  do {
    ++lastId_;
  } while (lastId_ == 0 || assertions_.contains(lastId_));
  assertions_.emplace(lastId_, Assertion{kind, name});
  return {0, lastId_};
}

void RecordedPowerManagement::setAssertionName(std::uint32_t id, const std::string& name) {
  if (const auto found = assertions_.find(id); found != assertions_.end()) {
    found->second.name = name;
  }
}

void RecordedPowerManagement::releaseAssertion(std::uint32_t id) {
  assertions_.erase(id);
}

std::vector<RecordedPowerManagement::LiveAssertion> RecordedPowerManagement::liveAssertions() {
  std::vector<LiveAssertion> live;
  for (const auto& [id, assertion] : assertions_)
    live.push_back({assertion.kind, assertion.name, {}});
  return live;
}

}  // namespace platform

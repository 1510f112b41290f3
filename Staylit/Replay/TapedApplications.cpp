#include "Staylit/Replay/TapedApplications.h"

#include <string>
#include <string_view>

namespace staylit {
namespace {

/// Below this number it does not matter how many applications of the list are gone.
constexpr std::size_t kFewApplications = 1024;

bool areSame(const std::optional<tidewell::SharedText>& left,
             const std::optional<tidewell::SharedText>& right) {
  if (left.has_value() != right.has_value()) return false;
  return !left || *left == std::string_view(*right);
}

std::string copied(std::string_view text) {
  return std::string(text);
}

}  // namespace

void TapedApplications::fold(const tidewell::TickInputs& tick,
                             std::vector<TapedApplication>& applications) {
  ++ticks_;
  present_ = 0;
  for (const tidewell::RawSample& sample : tick.samples) {
    const std::size_t place = placeFor(sample, applications);
    TapedApplication& application = applications[place];
    if (known_[place].seenAt != ticks_) beginTick(sample, place, application);
    application.usage.cpuNanos += sample.cpuNanos;
    application.usage.diskBytes += sample.diskBytes;
    const auto total = tick.netTotals.find(sample.pid);
    if (total != tick.netTotals.end()) application.usage.netBytes += total->second;
  }
  for (std::size_t place = 0; place < applications.size(); ++place)
    applications[place].isPresent = known_[place].seenAt == ticks_;
}

std::optional<std::size_t> TapedApplications::placeOf(std::string_view key) const {
  const auto found = places_.find(key);
  return found == places_.end() ? std::nullopt : std::optional(found->second);
}

bool TapedApplications::isWorthClearing() const {
  return known_.size() > kFewApplications && known_.size() > 2 * present_;
}

void TapedApplications::clear() {
  places_.clear();
  known_.clear();
}

std::size_t TapedApplications::placeFor(const tidewell::RawSample& sample,
                                        std::vector<TapedApplication>& applications) {
  const std::string_view key = sample.bundleID ? *sample.bundleID : sample.executable;
  const auto found = places_.find(key);
  if (found != places_.end()) return found->second;
  const std::size_t place = known_.size();
  places_.emplace(key, place);
  known_.emplace_back();
  applications.emplace_back();
  return place;
}

/// The first process of an application decides its names.
void TapedApplications::beginTick(const tidewell::RawSample& first, std::size_t place,
                                  TapedApplication& application) {
  Known& known = known_[place];
  known.seenAt = ticks_;
  ++present_;
  application.usage = {};
  const bool isSame = !known.executable.empty() &&
                      known.executable == std::string_view(first.executable) &&
                      areSame(known.bundleID, first.bundleID) &&
                      known.displayName == std::string_view(first.displayName);
  if (isSame) return;
  known.executable = first.executable;
  known.bundleID = first.bundleID;
  known.displayName = first.displayName;
  application.executable = copied(first.executable);
  application.bundleID.reset();
  if (first.bundleID) application.bundleID = copied(*first.bundleID);
  application.display = copied(first.displayName);
  if (names_) names_->replaceIn(application);
}

}  // namespace staylit

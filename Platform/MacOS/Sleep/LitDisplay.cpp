#include "Platform/MacOS/Sleep/LitDisplay.h"

#include <algorithm>
#include <string_view>

namespace platform {
namespace {

constexpr std::string_view kNameEnd = "Prevent sleep while display is on";
/// Where only the system itself can put a program.
constexpr std::string_view kSystemFolder = "/System/";
constexpr std::string_view kDaemon = "/powerd";

bool hasFittingName(const tidewell::ListedAssertion& assertion) {
  return assertion.reason.ends_with(kNameEnd);
}

bool isPowerDaemon(std::string_view program) {
  return program.starts_with(kSystemFolder) && program.ends_with(kDaemon);
}

}  // namespace

std::vector<tidewell::ListedAssertion> withoutLitDisplay(
    std::vector<tidewell::ListedAssertion> assertions, const std::function<std::string()>& owner) {
  if (std::ranges::any_of(assertions, hasFittingName) && isPowerDaemon(owner())) {
    std::erase_if(assertions, hasFittingName);
  }
  return assertions;
}

}  // namespace platform

#include "Staylit/SamplingProgress.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>

namespace staylit {
namespace {

/// Goes to the first column and clears everything behind it.
constexpr std::string_view kClearLine = "\r\x1b[K";
constexpr std::size_t kBarWidth = 20;

std::string bar(double fraction) {
  const auto filled = static_cast<std::size_t>(fraction * static_cast<double>(kBarWidth));
  return "[" + std::string(filled, '=') + std::string(kBarWidth - filled, ' ') + "]";
}

}  // namespace

SamplingProgress::SamplingProgress(tidewell::Console& console, tidewell::Seconds duration)
    : console_(console), duration_(duration), visible_(console.errorIsTerminal()) {}

SamplingProgress::~SamplingProgress() {
  if (visible_) console_.writeError(kClearLine);
}

void SamplingProgress::show(tidewell::Seconds elapsed) {
  if (!visible_) return;
  const double left = std::ceil((duration_ - elapsed).count());
  console_.writeError(std::string(kClearLine) + "Sampling " + bar(elapsed / duration_) + " " +
                      std::to_string(static_cast<long long>(left)) + "s left");
}

}  // namespace staylit

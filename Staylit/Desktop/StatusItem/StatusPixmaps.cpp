#include "Staylit/Desktop/StatusItem/StatusPixmaps.h"

#include <array>

namespace staylit {
namespace {

// This file is made from the drawings. It holds the arrays `kOpacities…`, and `kPixmaps` with all
// of them.
#include "StatusPixmaps.inc"

// No grey stands out much from both white and a usual dark panel (#2b2b2b), so that there is little
// room for two: the first has contrasts of 3.3 and 4.3 with them, the dimmed one of 3.1 and 3.2.
// What tells the states apart on such hosts is the outline.
constexpr std::uint32_t kGrey = 0x8e8e8e;
constexpr std::uint32_t kDimmedGrey = 0x828282;
constexpr std::uint32_t kDimmedPercent = 88;

}  // namespace

std::span<const StatusPixmap> statusPixmaps() {
  return kPixmaps;
}

std::uint32_t statusPixel(std::uint8_t opacity, bool isDimmed) {
  if (!isDimmed) return (std::uint32_t{opacity} << 24U) | kGrey;
  return (opacity * kDimmedPercent / 100 << 24U) | kDimmedGrey;
}

}  // namespace staylit

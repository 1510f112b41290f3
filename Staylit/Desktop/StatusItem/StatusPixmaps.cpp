#include "Staylit/Desktop/StatusItem/StatusPixmaps.h"

#include <array>

namespace staylit {
namespace {

// This file is made from the drawings. It holds the arrays `kOpacities…`, and `kPixmaps` with all
// of them.
#include "StatusPixmaps.inc"

/// The contrast of this grey is the same, about 3.3 to 1, with white and with a usual dark panel.
constexpr std::uint32_t kGrey = 0x8e8e8e;

}  // namespace

std::span<const StatusPixmap> statusPixmaps() {
  return kPixmaps;
}

std::uint32_t statusPixel(std::uint8_t opacity, bool isDimmed) {
  const std::uint32_t alpha = isDimmed ? opacity / 2U : opacity;
  return (alpha << 24U) | kGrey;
}

}  // namespace staylit

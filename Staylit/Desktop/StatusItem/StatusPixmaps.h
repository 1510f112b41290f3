#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace staylit {

/// A status symbol, which the build draws: the opacity of each pixel in one byte, row by row.
struct StatusPixmap {
  std::string_view symbol;  ///< The system symbol name.
  std::int32_t size;        ///< Width and height.
  std::span<const std::uint8_t> opacities;
};

/// Every status symbol in every size.
std::span<const StatusPixmap> statusPixmaps();

/// A pixel of this opacity in the colour of the pixmaps, which is visible on dark and on light
/// panels: alpha, red, green, blue. Dimmed pixels are a little transparent.
std::uint32_t statusPixel(std::uint8_t opacity, bool isDimmed);

}  // namespace staylit

#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace staylit {

/// A status symbol as opacities, a byte each, row by row; drawn when the program was built.
struct StatusPixmap {
  std::string_view symbol;  ///< The system symbol name.
  std::int32_t size;        ///< Width and height.
  std::span<const std::uint8_t> opacities;
};

/// Every status symbol in every size.
std::span<const StatusPixmap> statusPixmaps();

/// A pixel in the colour of pixmaps, which shows on dark and on light panels: alpha, red, green,
/// blue. Dimmed ones are half transparent.
std::uint32_t statusPixel(std::uint8_t opacity, bool isDimmed);

}  // namespace staylit

#pragma once

#include "Tidewell/Ports/Text.h"

namespace platform {

/// Text by Foundation's rules. A character is a composed character sequence.
class FoundationText final : public tidewell::Text {
 public:
  std::string lowercased(std::string_view text) override;
  std::weak_ordering localizedCaseInsensitiveCompare(std::string_view left,
                                                     std::string_view right) override;
  std::string padded(std::string_view text, std::size_t length) override;
};

}  // namespace platform

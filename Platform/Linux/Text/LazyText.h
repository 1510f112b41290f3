#pragma once

#include <functional>
#include <memory>
#include <mutex>

#include "Tidewell/Ports/Text.h"

namespace platform {

/// Handles text of plain ASCII by itself, and leaves all other text to an expert. The expert is
/// fetched for the first such text, because most runs of the program meet none, and Unicode's
/// tables take more memory than the whole program. Safe from any thread.
///
/// Without an expert, letters beyond ASCII keep their case, the order is by code point, and padding
/// counts code points.
class LazyText : public tidewell::Text {
 public:
  using Expert = std::unique_ptr<tidewell::Text>;

  /// `fetch` is called at most once and may return null.
  explicit LazyText(std::function<Expert()> fetch);

  std::string lowercased(std::string_view text) override;
  std::weak_ordering localizedCaseInsensitiveCompare(std::string_view left,
                                                     std::string_view right) override;
  std::string padded(std::string_view text, std::size_t length) override;

 private:
  tidewell::Text* expert();

  std::function<Expert()> fetch_;
  std::once_flag once_;
  Expert expert_;
};

}  // namespace platform

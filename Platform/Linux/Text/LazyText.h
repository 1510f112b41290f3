#pragma once

#include <functional>
#include <memory>
#include <mutex>

#include "Tidewell/Ports/Text.h"

namespace platform {

/// Text of plain ASCII by itself, and all other text by an expert that is fetched when the first
/// such text comes along: most programs never see one, and Unicode's tables weigh more than they
/// do. Safe from any thread.
///
/// Without an expert, letters beyond ASCII keep their case, order is by code point, and padding
/// counts code points.
class LazyText : public tidewell::Text {
 public:
  using Expert = std::unique_ptr<tidewell::Text>;

  /// `fetch` is called once at most and may return null.
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

#include "Tidewell/SharedText.h"

#include <algorithm>

namespace tidewell {

SharedText SharedTexts::share(std::string_view text) {
  if (text.empty()) return {};
  const auto found = texts_.find(text);
  if (found != texts_.end()) return SharedText(*found);
  if (texts_.size() >= nextCleaning_) {
    std::erase_if(texts_, [](const Text& kept) { return kept.use_count() == 1; });
    nextCleaning_ = std::max<std::size_t>(64, 2 * texts_.size());
  }
  return SharedText(*texts_.insert(std::make_shared<const std::string>(text)).first);
}

}  // namespace tidewell

#include "Staylit/Replay/TapeReader.h"

#include <utility>

#include "Staylit/Replay/TapeBlock.h"
#include "Staylit/Replay/TapeFormat.h"

namespace staylit {
namespace {

/// What the openings of all versions have in common.
constexpr std::string_view kAnyOpening =
    tapeFormat::kOpening.substr(0, tapeFormat::kOpening.size() - 2);

}  // namespace

TapeReader::TapeReader(std::string_view file)
    : rest_(file),
      isTape_(file.starts_with(tapeFormat::kOpening)),
      isOfLaterVersion_(!isTape_ && file.starts_with(kAnyOpening)) {
  rest_.remove_prefix(isTape_ ? tapeFormat::kOpening.size() : rest_.size());
}

std::optional<TapeEvent> TapeReader::next() {
  while (!isCut_) {
    if (auto event = decoder_.next()) return event;
    isCut_ = decoder_.isDamaged();
    if (isCut_ || rest_.empty()) break;
    auto frames = tapeBlock::takeUnpacked(rest_);
    if (!frames) break;
    frames_ = std::move(*frames);
    decoder_.feed(frames_);
  }
  return std::nullopt;
}

}  // namespace staylit

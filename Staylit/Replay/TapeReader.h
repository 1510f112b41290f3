#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Staylit/Replay/Tape.h"
#include "Staylit/Replay/TapeDecoder.h"

namespace staylit {

/// Reads the events of one file of a tape. What cannot be read ends the tape. One thread at a time.
class TapeReader {
 public:
  /// `file` is all that the file has, and must outlive this.
  explicit TapeReader(std::string_view file);

  /// Whether the file begins as a tape does that this program can read. If not, it has no events.
  [[nodiscard]] bool isTape() const { return isTape_; }
  /// Whether the file begins as a tape of a later version does.
  [[nodiscard]] bool isOfLaterVersion() const { return isOfLaterVersion_; }

  /// The next event; absent at the end.
  std::optional<TapeEvent> next();

  /// What the last tick saw.
  [[nodiscard]] const TapedInputs& inputs() const { return decoder_.inputs(); }
  /// Changes whenever the places of `inputs` have got new names.
  [[nodiscard]] std::uint32_t version() const { return decoder_.version(); }

  /// Whether, at the end, there is a rest that cannot be read, because the recording program was
  /// killed or the file is damaged.
  [[nodiscard]] bool hasUnreadableRest() const { return isTape_ && (isCut_ || !rest_.empty()); }

 private:
  std::string_view rest_;
  std::string frames_;  ///< Of the present block.
  TapeDecoder decoder_;
  bool isTape_ = false;
  bool isOfLaterVersion_ = false;
  bool isCut_ = false;
};

}  // namespace staylit

#pragma once

#include <string>
#include <string_view>

#include "Staylit/Replay/Tape.h"
#include "Tidewell/Ports/Text.h"
#include "Tidewell/TextMap.h"

namespace staylit {

/// Replaces names that the catalogue does not know by made-up ones ("app-01"), always the same one
/// for the same name. Names that the catalogue knows stay, because what counts as work depends on
/// them. Main thread only; `text` must outlive it.
///
/// It keeps each name that it has replaced for as long as it lives, because the same name must get
/// the same one again. A tape has each of them too, so the largest size of its file bounds the
/// number; 100 000 names, as in a build with one for each step, take some 15 MB.
class MadeUpNames {
 public:
  explicit MadeUpNames(tidewell::Text& text) : text_(text) {}

  /// In place of a program, of an application's identifier, or of who asks to stay awake.
  std::string of(std::string_view name);

  /// Replaces the names of `application`. It is shown by the name that the catalogue has for it, or
  /// else by what replaces its identifier or program.
  void replaceIn(TapedApplication& application);

 private:
  bool isKnown(std::string_view name);

  tidewell::Text& text_;
  tidewell::TextMap<std::string> madeUp_;
};

}  // namespace staylit

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace staylit::campaign {

/// How much a campaign does: everything, or as much as fits into a quarter of a minute.
struct Effort {
  bool quick = false;
};

/// What a campaign found. Without findings, everything held that must hold.
struct Outcome {
  std::int64_t runs = 0;
  /// One sentence for each finding, with what is needed to repeat it (a seed, a moment).
  std::vector<std::string> findings;
  /// The measured figures, in a few words.
  std::string measured;
  /// Why this machine does not allow the campaign; empty when it does.
  std::string notPossible;
};

inline Outcome notPossible(std::string why) {
  Outcome outcome;
  outcome.notPossible = std::move(why);
  return outcome;
}

/// Something that is done to the program again and again, with a rule that must hold meanwhile.
struct Campaign {
  std::string_view name;
  std::string_view whatIsDone;
  std::string_view whatMustHold;
  Outcome (*run)(Effort effort);
};

}  // namespace staylit::campaign

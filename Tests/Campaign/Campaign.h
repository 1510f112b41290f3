#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace staylit::campaign {

/// How much a campaign does: the whole, or as much as fits into a quarter of a minute.
struct Effort {
  bool quick = false;
};

/// What a campaign found. No findings means that everything held that must hold.
struct Outcome {
  std::int64_t runs = 0;
  /// A sentence each. What is needed to repeat a finding (a seed, a moment) stands in it.
  std::vector<std::string> findings;
  /// The figures that a reader wants to see, in a few words.
  std::string measured;
  /// Why nothing was tried, where this machine does not allow it; empty otherwise.
  std::string notPossible;
};

inline Outcome notPossible(std::string why) {
  Outcome outcome;
  outcome.notPossible = std::move(why);
  return outcome;
}

/// Something that is done to the program again and again, and what must hold meanwhile.
struct Campaign {
  std::string_view name;
  std::string_view whatIsDone;
  std::string_view whatMustHold;
  Outcome (*run)(Effort effort);
};

}  // namespace staylit::campaign

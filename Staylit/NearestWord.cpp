#include "Staylit/NearestWord.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

namespace staylit {
namespace {

/// How many letters have to be put in, left out or exchanged to make one word of the other.
std::size_t differingLetters(std::string_view left, std::string_view right) {
  // One row of the table of distances between all beginnings of the two words.
  std::vector<std::size_t> row(right.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= left.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= right.size(); ++j) {
      const std::size_t exchanged = diagonal + (left[i - 1] == right[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, exchanged});
    }
  }
  return row.back();
}

std::size_t distance(std::string_view written, std::string_view word) {
  constexpr std::size_t kShortestBeginning = 2;
  if (written.size() >= kShortestBeginning && word.starts_with(written)) return 0;
  return differingLetters(written, word);
}

}  // namespace

std::optional<std::string> nearestWord(std::string_view written,
                                       std::span<const std::string_view> words) {
  // A program's argument may be as long as it likes; a typing error is short.
  constexpr std::size_t kLongestWord = 40;
  if (written.empty() || words.empty() || written.size() > kLongestWord) return std::nullopt;
  const auto nearer = [written](std::string_view left, std::string_view right) {
    return distance(written, left) < distance(written, right);
  };
  const std::string_view nearest = *std::ranges::min_element(words, nearer);
  const std::size_t allowed = std::max<std::size_t>(1, (nearest.size() + 1) / 3);
  if (distance(written, nearest) > allowed) return std::nullopt;
  return std::string(nearest);
}

}  // namespace staylit

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "Tidewell/TextMap.h"

namespace tidewell {

/// A text that is in memory once, although many objects hold it. It never changes, and is empty by
/// default.
class SharedText {
 public:
  SharedText() = default;

  [[nodiscard]] bool empty() const { return !text_; }
  operator std::string_view() const {
    return text_ ? std::string_view(*text_) : std::string_view();
  }
  friend bool operator==(const SharedText& text, std::string_view other) {
    return std::string_view(text) == other;
  }

 private:
  friend class SharedTexts;
  explicit SharedText(std::shared_ptr<const std::string> text) : text_(std::move(text)) {}

  std::shared_ptr<const std::string> text_;
};

/// Gives equal texts the same memory. From time to time it forgets the texts that nobody holds any
/// more. The texts may outlive it. One thread at a time.
class SharedTexts {
 public:
  SharedText share(std::string_view text);
  /// How many texts are kept, including those that nobody holds any more.
  [[nodiscard]] std::size_t size() const { return texts_.size(); }

 private:
  using Text = std::shared_ptr<const std::string>;
  struct Hash : TextHash {
    using TextHash::operator();
    std::size_t operator()(const Text& text) const { return (*this)(std::string_view(*text)); }
  };
  struct Equal {
    using is_transparent = void;
    bool operator()(const Text& left, const Text& right) const { return *left == *right; }
    bool operator()(const Text& left, std::string_view right) const { return *left == right; }
    bool operator()(std::string_view left, const Text& right) const { return left == *right; }
  };

  std::unordered_set<Text, Hash, Equal> texts_;
  std::size_t nextCleaning_ = 64;  ///< The number of texts at which it forgets again.
};

}  // namespace tidewell

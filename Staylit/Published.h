#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace staylit {

/// Keeps an observer subscribed until it is dropped. It may outlive the observed property.
class Subscription {
 public:
  Subscription() = default;
  explicit Subscription(std::shared_ptr<void> observer) : observer_(std::move(observer)) {}

 private:
  std::shared_ptr<void> observer_;
};

/// A property whose observers are told of every assignment, before the value changes, even when the
/// new value equals the old one.
///
/// One thread only, on which `set` also calls the observers, in the order in which they subscribed.
/// While it is told, an observer may drop its own subscription or any other, and may subscribe
/// others, which are told from the next assignment on. It must not assign the same property.
template <typename Value>
class Published {
 public:
  using Observer = std::function<void(const Value& next)>;

  explicit Published(Value initial) : value_(std::move(initial)) {}
  Published(const Published&) = delete;
  Published& operator=(const Published&) = delete;

  [[nodiscard]] const Value& get() const { return value_; }

  void set(Value next) {
    tellObservers(next);
    value_ = std::move(next);
  }

  /// `observer` is told each value that is about to be assigned, until the subscription is dropped.
  [[nodiscard]] Subscription observe(Observer observer) {
    auto shared = std::make_shared<Observer>(std::move(observer));
    observers_.push_back(shared);
    return Subscription(shared);
  }

 private:
  void tellObservers(const Value& next) {
    std::erase_if(observers_, [](const auto& observer) { return observer.expired(); });
    const auto observers = observers_;
    for (const auto& weak : observers) {
      if (const auto observer = weak.lock()) (*observer)(next);
    }
  }

  Value value_;
  std::vector<std::weak_ptr<Observer>> observers_;
};

}  // namespace staylit

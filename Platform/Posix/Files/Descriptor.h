#pragma once

#include <unistd.h>

#include <utility>

namespace platform {

/// Owns a file descriptor and closes it. It is empty when the number is negative, as after a failed
/// call. Move-only; one thread at a time.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { reset(); }
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this != &other) {
      reset();
      number_ = std::exchange(other.number_, -1);
    }
    return *this;
  }

  [[nodiscard]] int get() const { return number_; }
  explicit operator bool() const { return number_ >= 0; }

  void reset() {
    if (number_ >= 0) ::close(number_);
    number_ = -1;
  }

 private:
  int number_ = -1;
};

}  // namespace platform

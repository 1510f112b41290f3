#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace platform {

/// Owns one reference to a Core Foundation object, or none. `Object` is a reference type such as
/// `CFStringRef`. Move-only; as safe between threads as the object itself.
template <typename Object>
class CFRef {
 public:
  CFRef() = default;

  /// Takes over a reference that the caller owns, as from a function with Create or Copy in its
  /// name. `object` may be null.
  [[nodiscard]] static CFRef adopt(Object object) { return CFRef(object); }

  /// Adds a reference to an object that somebody else owns, as from a function with Get in its
  /// name. `object` may be null.
  [[nodiscard]] static CFRef retain(Object object) {
    if (object != nullptr) CFRetain(object);
    return CFRef(object);
  }

  ~CFRef() {
    if (object_ != nullptr) CFRelease(object_);
  }

  CFRef(CFRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  CFRef& operator=(CFRef&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  CFRef(const CFRef&) = delete;
  CFRef& operator=(const CFRef&) = delete;

  [[nodiscard]] Object get() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

  /// Hands the reference to the caller, who must give it up.
  [[nodiscard]] Object release() { return std::exchange(object_, nullptr); }

 private:
  explicit CFRef(Object object) : object_(object) {}

  Object object_ = nullptr;
};

}  // namespace platform

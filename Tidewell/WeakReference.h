#pragma once

#include <memory>

namespace tidewell {

/// A reference to an object for work that runs later. It is null once the object is gone.
///
/// Any thread may copy and drop it. Only the thread that owns the object may look through it.
template <typename Object>
class WeakReference {
 public:
  WeakReference() = default;

  [[nodiscard]] Object* get() const {
    const auto object = object_.lock();
    return object ? *object : nullptr;
  }
  explicit operator bool() const { return get() != nullptr; }
  /// Use both only while the reference is not null.
  Object* operator->() const { return get(); }
  Object& operator*() const { return *get(); }

 private:
  template <typename>
  friend class WeakReferenceSource;
  explicit WeakReference(const std::shared_ptr<Object*>& object) : object_(object) {}

  std::weak_ptr<Object*> object_;
};

/// Makes the weak references to an object, and makes them null when the object goes. The object
/// owns its source as its last member, so that the references are null before any other member
/// goes.
template <typename Object>
class WeakReferenceSource {
 public:
  explicit WeakReferenceSource(Object& object) : object_(std::make_shared<Object*>(&object)) {}
  WeakReferenceSource(const WeakReferenceSource&) = delete;
  WeakReferenceSource& operator=(const WeakReferenceSource&) = delete;

  [[nodiscard]] WeakReference<Object> make() const { return WeakReference<Object>(object_); }

 private:
  std::shared_ptr<Object*> object_;
};

}  // namespace tidewell

#pragma once

#include <memory>

namespace tidewell {

/// What work for later holds instead of the object that it is about: null once that object is gone.
/// It may be copied and dropped on any thread, and is to be looked at on the object's own.
template <typename Object>
class WeakReference {
 public:
  WeakReference() = default;

  [[nodiscard]] Object* get() const {
    const auto object = object_.lock();
    return object ? *object : nullptr;
  }
  explicit operator bool() const { return get() != nullptr; }
  /// Both only while it is not null.
  Object* operator->() const { return get(); }
  Object& operator*() const { return *get(); }

 private:
  template <typename>
  friend class WeakReferences;
  explicit WeakReference(const std::shared_ptr<Object*>& object) : object_(object) {}

  std::weak_ptr<Object*> object_;
};

/// Makes the weak references to an object, and ends them all when it goes. The object owns it, as
/// its last member, so that the references end before anything else of the object does.
template <typename Object>
class WeakReferences {
 public:
  explicit WeakReferences(Object& object) : object_(std::make_shared<Object*>(&object)) {}
  WeakReferences(const WeakReferences&) = delete;
  WeakReferences& operator=(const WeakReferences&) = delete;

  [[nodiscard]] WeakReference<Object> make() const { return WeakReference<Object>(object_); }

 private:
  std::shared_ptr<Object*> object_;
};

}  // namespace tidewell

#pragma once

#include <systemd/sd-event.h>

#include <utility>

namespace platform {

/// Owns an event source, which does not fire any more when the owner is gone. Move-only; the loop's
/// thread only. The source's own handler may destroy the owner.
class EventSource {
 public:
  EventSource() = default;
  /// Takes over the reference.
  explicit EventSource(sd_event_source* source) : source_(source) {}
  ~EventSource() { reset(); }
  EventSource(EventSource&& other) noexcept : source_(std::exchange(other.source_, nullptr)) {}
  EventSource& operator=(EventSource&& other) noexcept {
    if (this != &other) {
      reset();
      source_ = std::exchange(other.source_, nullptr);
    }
    return *this;
  }

  [[nodiscard]] sd_event_source* get() const { return source_; }
  explicit operator bool() const { return source_ != nullptr; }
  void reset() { sd_event_source_disable_unref(std::exchange(source_, nullptr)); }

 private:
  sd_event_source* source_ = nullptr;
};

}  // namespace platform

#pragma once

namespace platform {

/// One wish that a service granted. Destroying it takes the wish back without waiting; it is void
/// once the service is gone. Main thread only.
class Inhibition {
 public:
  Inhibition() = default;
  virtual ~Inhibition() = default;
  Inhibition(const Inhibition&) = delete;
  Inhibition& operator=(const Inhibition&) = delete;
};

}  // namespace platform

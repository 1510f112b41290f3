#pragma once

namespace platform {

/// One wish that a service has granted. Destroying it takes the wish back without waiting. The wish
/// also ends when the service has gone. Main thread only.
class Inhibition {
 public:
  Inhibition() = default;
  virtual ~Inhibition() = default;
  Inhibition(const Inhibition&) = delete;
  Inhibition& operator=(const Inhibition&) = delete;
};

}  // namespace platform

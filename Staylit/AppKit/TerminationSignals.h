#pragma once

#include <dispatch/dispatch.h>

#include <vector>

namespace staylit {

/// While this object lives, SIGTERM, SIGINT and SIGHUP terminate the shared application in order,
/// on the main thread. A signal stays ignored when this process was started with it ignored. Make
/// one object, on the main thread.
class TerminationSignals {
 public:
  TerminationSignals();
  ~TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

 private:
  void watch(int signal);

  std::vector<dispatch_source_t> sources_;
};

}  // namespace staylit

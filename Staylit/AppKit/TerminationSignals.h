#pragma once

#include <dispatch/dispatch.h>

#include <vector>

namespace staylit {

/// While it lives, SIGTERM, SIGINT and SIGHUP terminate the shared application in order, on the
/// main thread. A signal that this process was started to ignore stays ignored. Made on the main
/// thread, once.
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

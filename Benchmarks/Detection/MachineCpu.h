#pragma once

#include <cstdint>

/// How busy the machine is, whoever uses it.
class MachineCpu {
 public:
  MachineCpu();

  /// Percent of all processors together since the last call, or since this was made.
  double percent();

 private:
  struct Times {
    std::uint64_t busy = 0;
    std::uint64_t all = 0;
  };

  static Times read();

  Times before_;
};

#pragma once

#include "Tests/Fakes/FakePorts.h"
#include "Tidewell/Accounting/ConservedProcesses.h"

namespace tidewell {

/// What stands between the core and the system's table of processes.
enum class Composition {
  bare,     ///< Nothing.
  shipped,  ///< `ConservedProcesses`, as in the program.
};

/// Fakes that are put together as the program puts its adapters together.
struct ComposedPorts : FakePorts {
  explicit ComposedPorts(Composition composition = Composition::shipped) {
    if (composition == Composition::bare) return;
    ports.processTable = borrowed(conserved);
  }

  AccountDirectory accounts;
  ConservedProcesses conserved{{processes, clock, accounts, 8}};
};

}  // namespace tidewell

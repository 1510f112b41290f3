#include "Tidewell/Ports/Ports.h"

#include <utility>

#include "Tidewell/FatalError.h"

namespace tidewell {
namespace {

Ports* installed = nullptr;
std::uint64_t installations = 0;

}  // namespace

InstalledPorts::InstalledPorts(Ports& ports) : former_(std::exchange(installed, &ports)) {
  ++installations;
}

InstalledPorts::~InstalledPorts() {
  installed = former_;
  ++installations;
}

Ports& InstalledPorts::current() {
  if (installed == nullptr) fatalError("no ports are installed");
  return *installed;
}

Ports* InstalledPorts::currentIfAny() {
  return installed;
}

std::uint64_t InstalledPorts::generation() {
  return installations;
}

}  // namespace tidewell

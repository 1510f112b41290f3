#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// Some properties of one interface of an object, read once and kept fresh by its PropertiesChanged
/// signal, so that reading them costs no call. Main thread only.
class RemoteProperties {
 public:
  using Names = std::set<std::string, std::less<>>;

  /// Keeps the properties that are `wanted`, whatever else the service tells. `activation` says
  /// whether the first reading may start the service; later ones never do. `bus` must outlive this.
  RemoteProperties(Bus& bus, std::string service, std::string path, std::string interface,
                   Names wanted, BusActivation activation = BusActivation::never);
  ~RemoteProperties();

  /// The properties, or null while the service is not there. `std::monostate` stands for all but
  /// numbers, truth values and texts of up to 256 bytes. The first call waits for the answer,
  /// within the bus's limit; without a running loop that is all that is ever read.
  const tidewell::PropertyDictionary* read();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace platform
